#include "odbc/statement_timer.h"

#include <sql.h>
#include <sqlext.h>

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace korlib::odbc {

// One thread for the process, started with the first timer. A driver's own time-out is not relied on:
// not every driver has one.
class Watchdog {
 public:
  static Watchdog& instance() {
    static Watchdog only;
    return only;
  }
  ~Watchdog() {
    {
      const std::lock_guard guard(lock_);
      is_over_ = true;
    }
    changed_.notify_one();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  void add(StatementTimer* timer) {
    bool is_first = false;
    {
      const std::lock_guard guard(lock_);
      is_first = timer->at_ < waiting_until_;
      timers_.insert(timer);
    }
    if (is_first) changed_.notify_one();
  }
  // The statement is not touched any more when this returns.
  void remove(StatementTimer* timer) {
    const std::lock_guard guard(lock_);
    timers_.erase(timer);
  }

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Sooner {
    bool operator()(const StatementTimer* a, const StatementTimer* b) const {
      return a->at_ != b->at_ ? a->at_ < b->at_ : a < b;
    }
  };

  Watchdog() : thread_([this] { watch(); }) {}

  void watch() {
    std::unique_lock guard(lock_);
    while (!is_over_) {
      const Time now = std::chrono::steady_clock::now();
      while (!timers_.empty() && (*timers_.begin())->at_ <= now) {
        StatementTimer* late = *timers_.begin();
        timers_.erase(timers_.begin());
        late->has_run_out_ = true;
        SQLCancel(late->statement_);
      }
      waiting_until_ = timers_.empty() ? Time::max() : (*timers_.begin())->at_;
      if (timers_.empty()) {
        changed_.wait(guard);
      } else {
        changed_.wait_until(guard, waiting_until_);
      }
    }
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::set<StatementTimer*, Sooner> timers_;
  Time waiting_until_ = Time::max();
  bool is_over_ = false;
  std::thread thread_;
};

StatementTimer::StatementTimer(void* statement, int seconds)
    : statement_(statement),
      at_(std::chrono::steady_clock::now() + std::chrono::seconds(seconds)),
      is_set_(seconds > 0) {
  if (is_set_) Watchdog::instance().add(this);
}

StatementTimer::~StatementTimer() {
  if (is_set_) Watchdog::instance().remove(this);
}

}  // namespace korlib::odbc
