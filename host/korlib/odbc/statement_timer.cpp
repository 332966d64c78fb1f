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
    const std::lock_guard guard(lock_);
    timers_.erase({timer->at_, timer});
  }

 private:
  using Time = std::chrono::steady_clock::time_point;

  Time next() const { return timers_.empty() ? Time::max() : timers_.begin()->first; }

  void watch(const std::stop_token& stop) {
    std::unique_lock guard(lock_);
    while (!stop.stop_requested()) {
      cancel_late();
      waiting_until_ = next();
      const auto is_sooner = [this] { return next() < waiting_until_; };
      changed_.wait_until(guard, stop, waiting_until_, is_sooner);
    }
  }

  void cancel_late() {
    const Time now = std::chrono::steady_clock::now();
    while (next() <= now) {
      StatementTimer* const late = timers_.begin()->second;
      timers_.erase(timers_.begin());
      late->has_run_out_ = true;
      SQLCancel(late->statement_);
    }
  }

  std::mutex lock_;
  std::condition_variable_any changed_;
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

}  // namespace

void StatementTimer::set_deadline(Clock::time_point deadline) noexcept { t_deadline = deadline; }

StatementTimer::StatementTimer(void* statement, int seconds)
    : statement_(statement), at_(end_of(seconds)), is_set_(at_ != Clock::time_point::max()) {
  if (!is_set_) return;
  // A cancellation before the driver has begun is forgotten by it: reading many rows would go on, one by one.
  if (at_ <= Clock::now()) {
    is_set_ = false;
    throw Failure(L"HYT00", L"The page took longer than the site allows.");
  }
  TimerThread::instance().add(this);
}

StatementTimer::~StatementTimer() {
  if (is_set_) TimerThread::instance().remove(this);
}

}  // namespace korlib::odbc
