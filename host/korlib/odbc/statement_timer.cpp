#include "odbc/statement_timer.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "odbc/failure.h"

namespace korlib::odbc {

// One for the process, started with the first timer.
class TimerThread {
 public:
  static TimerThread& instance() {
    static TimerThread only;
    return only;
  }

  void add(StatementTimer* timer) {
    bool is_sooner = false;
    {
      const std::lock_guard guard(lock_);
      timers_.emplace(timer->at_, timer);
      is_sooner = next() < waiting_until_;
    }
    if (is_sooner) changed_.notify_one();  // seldom: most statements are over before the time of an earlier one
  }
  void remove(StatementTimer* timer) {
    std::unique_lock guard(lock_);
    cancelled_.wait(guard, [&] { return in_hand_ != timer; });
    timers_.erase({timer->at_, timer});
  }

 private:
  using Time = std::chrono::steady_clock::time_point;

  Time next() const { return timers_.empty() ? Time::max() : timers_.begin()->first; }

  void watch(const std::stop_token& stop) {
    std::unique_lock guard(lock_);
    while (!stop.stop_requested()) {
      cancel_late(guard);
      waiting_until_ = next();
      const auto is_sooner = [this] { return next() < waiting_until_; };
      changed_.wait_until(guard, stop, waiting_until_, is_sooner);
    }
  }

  // One that was cancelled is looked at again: a driver forgets a cancellation that comes between two of its steps.
  void cancel_late(std::unique_lock<std::mutex>& guard) {
    const Time now = std::chrono::steady_clock::now();
    while (next() <= now) {
      StatementTimer* const due = timers_.begin()->second;
      auto place = timers_.extract(timers_.begin());
      if (const auto cause = due->look(now); cause != StatementTimer::Cause::none) {
        due->cause_ = cause;
        cancel(*due, guard);
      }
      due->at_ = due->next_look(now);
      place.value().first = due->at_;
      timers_.insert(std::move(place));
    }
  }

  // Some drivers ask their server to cancel, which may be long in answering: nobody else waits for that.
  void cancel(StatementTimer& due, std::unique_lock<std::mutex>& guard) {
    in_hand_ = &due;
    guard.unlock();
    SQLCancel(due.statement_);
    guard.lock();
    in_hand_ = nullptr;
    cancelled_.notify_all();
  }

  std::mutex lock_;
  std::condition_variable_any changed_;
  std::condition_variable cancelled_;
  const StatementTimer* in_hand_ = nullptr;            // whose statement is being cancelled
  std::set<std::pair<Time, StatementTimer*>> timers_;  // the soonest first
  Time waiting_until_ = Time::max();
  std::jthread thread_{[this](const std::stop_token& stop) { watch(stop); }};  // the last member: it uses the others
};

namespace {

using Clock = std::chrono::steady_clock;

thread_local Clock::time_point t_deadline = Clock::time_point::max();

Clock::time_point end_of(int seconds) {
  return seconds > 0 ? std::min(t_deadline, Clock::now() + std::chrono::seconds(seconds)) : t_deadline;
}

constexpr std::chrono::milliseconds kLookEvery{100};  // at a statement whose page has a limit of memory
constexpr std::chrono::milliseconds kCancelEvery{1000};

constexpr const wchar_t* kPageIsLate = L"The page took longer than the site allows.";
constexpr const wchar_t* kPageIsFull = L"The page took more memory than the site allows.";

}  // namespace

void StatementTimer::set_deadline(Clock::time_point deadline) noexcept { t_deadline = deadline; }

std::chrono::milliseconds StatementTimer::time_left(int seconds) noexcept {
  using std::chrono::milliseconds;
  const milliseconds own = seconds > 0 ? std::chrono::seconds(seconds) : milliseconds::max();
  if (t_deadline == Clock::time_point::max()) return own;
  const auto left = std::chrono::duration_cast<milliseconds>(t_deadline - Clock::now());
  return std::clamp(left, milliseconds(0), own);
}

StatementTimer::StatementTimer(void* statement, int seconds)
    : statement_(statement), end_(end_of(seconds)), memory_(korlib_host::memory_limit()) {
  if (end_ == Clock::time_point::max() && !memory_) return;
  // A cancellation before the driver has begun is forgotten by it: reading many rows would go on, one by one.
  const Clock::time_point now = Clock::now();
  if (end_ <= now) throw Failure(L"HYT00", kPageIsLate);
  if (memory_ && memory_->is_exceeded()) throw Failure(L"HY001", kPageIsFull);
  at_ = next_look(now);
  is_set_ = true;
  TimerThread::instance().add(this);
}

void StatementTimer::stop() noexcept {
  if (std::exchange(is_set_, false)) TimerThread::instance().remove(this);
}

StatementTimer::Cause StatementTimer::look(Clock::time_point now) const {
  if (end_ <= now) return Cause::time;
  return memory_ && memory_->is_exceeded() ? Cause::memory : cause_.load();
}

StatementTimer::Clock::time_point StatementTimer::next_look(Clock::time_point now) const {
  if (has_cancelled()) return now + kCancelEvery;
  return memory_ ? std::min(end_, now + kLookEvery) : end_;
}

void StatementTimer::fail() const {
  if (cause_ == Cause::memory) throw Failure(L"HY001", kPageIsFull);
  throw Failure(L"HYT00", L"The command took longer than its time-out.");
}

}  // namespace korlib::odbc
