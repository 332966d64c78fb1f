#include "http/worker_pool.h"

#include <algorithm>
#include <utility>

namespace zelto {

WorkerPool::WorkerPool(WorkerFactory factory, const WorkerPoolOptions& options)
    : factory_(std::move(factory)), options_(options) {}

WorkerPool::~WorkerPool() { stop(); }

void WorkerPool::start() {
  // One after the other: engines initialise process-wide state with the first worker.
  for (unsigned i = 0; i < options_.threads; ++i) {
    threads_.emplace_back(options_.stack, [this] { run(); });
    std::unique_lock lock(lock_);
    changed_.wait(lock, [&] { return ready_ == i + 1 || failure_; });
    if (failure_) std::rethrow_exception(failure_);
  }
}

WorkerPool::Submitted WorkerPool::submit(std::shared_ptr<Job> job, const std::string& turn) {
  {
    const std::lock_guard lock(lock_);
    if (stopping_) return Submitted::refused;
    if (const auto taken = turn.empty() ? turns_.end() : turns_.find(turn); taken != turns_.end()) {
      if (taken->second.size() >= options_.turn_queue) return Submitted::refused;
      taken->second.push_back({std::move(job), turn});
      return Submitted::waits_for_turn;
    }
    if (queue_.size() >= options_.queue) return Submitted::refused;
    Tasks one;
    one.push_back({std::move(job), turn});
    if (!turn.empty()) turns_.try_emplace(turn);
    queue_.splice(queue_.end(), one);
  }
  changed_.notify_one();
  return Submitted::queued;
}

bool WorkerPool::withdraw(const Job& job, const std::string& turn) {
  Tasks withdrawn;
  const std::lock_guard lock(lock_);
  const auto taken = turns_.find(turn);
  if (taken == turns_.end()) return false;
  const auto found = std::ranges::find(taken->second, &job, [](const Task& task) { return task.job.get(); });
  if (found == taken->second.end()) return false;
  withdrawn.splice(withdrawn.end(), taken->second, found);
  return true;
}

// The next job of the turn may run.
void WorkerPool::end_turn(const std::string& turn) {
  if (turn.empty()) return;
  {
    const std::lock_guard lock(lock_);
    const auto taken = turns_.find(turn);
    if (taken == turns_.end()) return;
    if (taken->second.empty()) {
      turns_.erase(taken);
      return;
    }
    queue_.splice(queue_.end(), taken->second, taken->second.begin());
  }
  changed_.notify_one();
}

void WorkerPool::stop() {
  Tasks dropped;
  std::unordered_map<std::string, Tasks> dropped_turns;
  {
    const std::lock_guard lock(lock_);
    stopping_ = true;
    dropped.swap(queue_);
    dropped_turns.swap(turns_);
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
    const Task task = next();
    if (!task.job) break;
    try {
      task.job->run(*worker);
    } catch (...) {
      // Out of memory: not even its end could be reported. Releasing the job closes its connection.
    }
    end_turn(task.turn);
  }
}

WorkerPool::Task WorkerPool::next() {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
  if (queue_.empty()) return {};
  Task task = std::move(queue_.front());
  queue_.pop_front();
  return task;
}

}  // namespace zelto
