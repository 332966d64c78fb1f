#include "http/worker_pool.h"

#include <algorithm>
#include <utility>

namespace zelto {

namespace {

// Of workers and of places in the queue, the part that long jobs leave to the others.
constexpr unsigned kLeftPart = 4;

}  // namespace

// What the job of a thread has taken besides its own turn, and what it and those before have put off.
struct WorkerPool::Running {
  WorkerPool& pool;
  PutOff& put_off;
  std::vector<std::string> turns;
  static thread_local Running* of_this_thread;
};
thread_local WorkerPool::Running* WorkerPool::Running::of_this_thread = nullptr;

WorkerPool::WorkerPool(WorkerFactory factory, const WorkerPoolOptions& options)
    : factory_(std::move(factory)), options_(options), times_(options.threads) {}

WorkerPool::~WorkerPool() { stop(); }

void WorkerPool::start() {
  // One after the other: engines initialise process-wide state with the first worker.
  for (unsigned i = 0; i < options_.threads; ++i) {
    threads_.emplace_back(options_.stack, [this, i] { run(i); });
    std::unique_lock lock(lock_);
    changed_.wait(lock, [&] { return ready_ == i + 1 || failure_; });
    if (failure_) std::rethrow_exception(failure_);
  }
}

WorkerPool::Submitted WorkerPool::submit(std::shared_ptr<Job> job, const std::string& turn, const std::string& kind) {
  const auto now = Clock::now();
  {
    const std::lock_guard lock(lock_);
    if (stopping_) return Submitted::refused;
    if (const auto taken = turn.empty() ? turns_.end() : turns_.find(turn); taken != turns_.end()) {
      if (taken->second.size() >= options_.turn_queue) return Submitted::refused;
      taken->second.push_back({std::move(job), turn, kind});
      return Submitted::waits_for_turn;
    }
    const bool is_long = times_.is_long(kind, now);
    if (!has_room(is_long)) return Submitted::refused;
    Tasks one;
    one.push_back({std::move(job), turn, kind});
    if (!turn.empty()) turns_.try_emplace(turn);
    queue(one, is_long, now);
  }
  changed_.notify_one();
  return Submitted::queued;
}

bool WorkerPool::has_room(bool is_long) const {
  const std::size_t left = is_long ? options_.queue / kLeftPart : 0;
  return short_.size() + long_.size() < options_.queue && long_.size() < options_.queue - left;
}

// The first of these tasks. The caller holds the lock.
void WorkerPool::queue(Tasks& from, bool is_long, Clock::time_point now) {
  Task& task = from.front();
  task.is_long = is_long;
  task.is_quick = times_.is_quick(task.kind);
  task.number = queued_++;
  if (!task.is_long) last_short_ = now;
  Tasks& to = task.is_long ? long_ : short_;
  to.splice(to.end(), from, from.begin());
}

// The first long one that may begin now; the end when there is none.
WorkerPool::Tasks::iterator WorkerPool::first_long(Clock::time_point now) {
  const std::size_t busy = times_.long_running(now);
  const unsigned left = std::max(options_.threads / kLeftPart, 1U);
  if (busy < std::max(options_.threads - std::min(left, options_.threads), 1U)) return long_.begin();
  if (busy >= options_.threads || now - last_short_ < options_.left_for) return long_.end();
  return std::ranges::find_if(long_, [&](const Task& task) { return !times_.may_hold(task.kind, now); });
}

// False when there is none that may begin now.
bool WorkerPool::take_first(Clock::time_point now, Task* first) {
  const auto first_long = this->first_long(now);
  const bool is_long = first_long != long_.end() && (short_.empty() || first_long->number < short_.front().number);
  if (!is_long && short_.empty()) return false;
  Tasks& from = is_long ? long_ : short_;
  const auto taken = is_long ? first_long : short_.begin();
  *first = std::move(*taken);
  from.erase(taken);
  return true;
}

void WorkerPool::take_turn(const std::string& turn) noexcept {
  Running* const running = Running::of_this_thread;
  if (!running) return;
  try {
    std::string kept = turn;
    running->turns.reserve(running->turns.size() + 1);  // nothing fails once the turn is taken
    const std::lock_guard lock(running->pool.lock_);
    if (running->pool.turns_.try_emplace(turn).second) running->turns.push_back(std::move(kept));
  } catch (const std::bad_alloc&) {
    return;
  }
}

bool WorkerPool::is_followed() noexcept {
  const Running* const running = Running::of_this_thread;
  if (!running || !running->put_off.takes_more(Clock::now())) return false;
  WorkerPool& pool = running->pool;
  const std::lock_guard lock(pool.lock_);
  return !pool.short_.empty() && pool.short_.front().is_quick;
}

void WorkerPool::put_off(Letter letter) noexcept {
  Running::of_this_thread->put_off.add(std::move(letter), Clock::now());
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
    const auto now = Clock::now();
    queue(taken->second, times_.is_long(taken->second.front().kind, now), now);
  }
  changed_.notify_one();
}

void WorkerPool::stop() {
  Tasks dropped;
  Tasks dropped_long;
  std::unordered_map<std::string, Tasks> dropped_turns;
  {
    const std::lock_guard lock(lock_);
    stopping_ = true;
    dropped.swap(short_);
    dropped_long.swap(long_);
    dropped_turns.swap(turns_);
  }
  changed_.notify_all();
  threads_.clear();
}

void WorkerPool::run(unsigned number) {
  base::wake_without_interrupting();
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
  constexpr auto kNever = Clock::time_point::max();
  auto rests_from = Clock::time_point::min();
  auto until = kNever;
  PutOff put_off;
  while (worker) {
    const std::optional<Task> task = next(number, until, &put_off);
    if (!task) {
      worker->rest();
      rests_from = Clock::now() + options_.rest_every;
      until = kNever;
      continue;
    }
    if (!task->job) break;
    Running running{*this, put_off, {}};
    Running::of_this_thread = &running;
    try {
      task->job->run(*worker);
    } catch (...) {
      // Out of memory: not even its end could be reported. Releasing the job closes its connection.
    }
    Running::of_this_thread = nullptr;
    end_turn(task->turn);
    for (const std::string& turn : running.turns) end_turn(turn);
    until = std::max(Clock::now() + options_.rest_after, rests_from);
  }
}

// Once the worker has ended the one before.
std::optional<WorkerPool::Task> WorkerPool::next(unsigned worker, Clock::time_point until, PutOff* put_off) {
  std::unique_lock lock(lock_);
  times_.end(worker, Clock::now());
  for (;;) {
    const auto now = Clock::now();
    if (Task task; take_first(now, &task)) {
      times_.begin(worker, task.kind, task.is_long, now);
      // A worker that found only long ones when it could not have them may have them now.
      if (!long_.empty()) changed_.notify_one();
      lock.unlock();
      if (!task.is_quick || !put_off->takes_more(now)) put_off->do_all();
      return task;
    }
    if (!put_off->is_empty()) {
      lock.unlock();
      put_off->do_all();
      lock.lock();
      continue;
    }
    if (stopping_) return Task();
    if (now >= until) return std::nullopt;
    if (!long_.empty())
      changed_.wait_for(lock, options_.left_for);
    else if (until == Clock::time_point::max())
      changed_.wait(lock);
    else
      changed_.wait_until(lock, until);
  }
}

}  // namespace zelto
