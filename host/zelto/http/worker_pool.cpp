#include "http/worker_pool.h"

#include <utility>

namespace zelto {

WorkerPool::WorkerPool(WorkerFactory factory, unsigned threads, std::size_t stack, std::size_t queue)
    : factory_(std::move(factory)), count_(threads), stack_(stack), queue_limit_(queue) {}

WorkerPool::~WorkerPool() { stop(); }

void WorkerPool::start() {
  // One after the other: engines initialise process-wide state with the first worker.
  for (unsigned i = 0; i < count_; ++i) {
    threads_.emplace_back(stack_, [this] { run(); });
    std::unique_lock lock(lock_);
    changed_.wait(lock, [&] { return ready_ == i + 1 || failure_; });
    if (failure_) std::rethrow_exception(failure_);
  }
}

bool WorkerPool::submit(std::shared_ptr<Job> job) {
  {
    const std::lock_guard lock(lock_);
    if (stopping_ || queue_.size() >= queue_limit_) return false;
    queue_.push_back(std::move(job));
  }
  changed_.notify_one();
  return true;
}

void WorkerPool::stop() {
  std::deque<std::shared_ptr<Job>> dropped;
  {
    const std::lock_guard lock(lock_);
    stopping_ = true;
    dropped.swap(queue_);
  }
  changed_.notify_all();
  threads_.clear();
}

void WorkerPool::run() {
  std::unique_ptr<Worker> worker;
  std::exception_ptr failure;
  try {
    worker = factory_();
  } catch (...) {
    failure = std::current_exception();
  }
  {
    const std::lock_guard lock(lock_);
    if (failure)
      failure_ = failure;
    else
      ++ready_;
  }
  changed_.notify_all();
  while (worker) {
    const auto job = next();
    if (!job) break;
    try {
      job->run(*worker);
    } catch (...) {
      // Out of memory: not even its end could be reported. Releasing the job closes its connection.
      continue;
    }
  }
}

std::shared_ptr<Job> WorkerPool::next() {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
  if (queue_.empty()) return nullptr;
  auto job = std::move(queue_.front());
  queue_.pop_front();
  return job;
}

}  // namespace zelto
