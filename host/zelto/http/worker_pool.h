// The threads that answer requests.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/thread.h"
#include "http/hold_times.h"
#include "http/letter.h"
#include "http/put_off.h"
#include "http/worker.h"

namespace zelto {

// What a worker is given to do.
class Job {
 public:
  virtual ~Job() = default;
  virtual void run(Worker& worker) = 0;
};

struct WorkerPoolOptions {
  unsigned threads = 1;
  std::size_t stack = std::size_t{8} << 20;
  std::size_t queue = 256;     // jobs that may wait for a worker
  std::size_t turn_queue = 8;  // jobs that may wait for one turn
  // For so long after the last short job, long ones leave something to the next.
  std::chrono::milliseconds left_for{1000};
  // A worker that has had jobs, and nothing to do for so long, rests once, but not again this soon.
  std::chrono::milliseconds rest_after{1000};
  std::chrono::milliseconds rest_every{10000};
};

// Jobs of the same turn run one after the other, in the order in which they came. Those that wait for their turn
// wait here, and hold no worker.
//
// Jobs run in the order in which they came, but those of a long kind leave a worker in four to the others, and a place
// in four of the queue: a few visitors of a page that takes its time would else have everybody wait for it. While no
// short job comes they may have all workers, but not those that may hold them for as long as a client likes.
class WorkerPool {
 public:
  WorkerPool(WorkerFactory factory, const WorkerPoolOptions& options);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // Starts the threads and waits until each has made its worker. Throws what the factory threw.
  void start();
  // refused: the queue is full, that of the turn is, or the pool has stopped. A job without a turn, an empty one,
  // waits for nobody. `kind` tells which jobs take about the same time; one without is never long.
  enum class Submitted { queued, waits_for_turn, refused };
  Submitted submit(std::shared_ptr<Job> job, const std::string& turn = {}, const std::string& kind = {});
  // Takes back a job that waits for its turn; false when there is none such: it has had its turn.
  bool withdraw(const Job& job, const std::string& turn);
  // By the job that the calling thread runs: until it ends, others of that turn wait for it as well. A turn that has
  // jobs already stays as it is. Outside of a job, or where memory has run out, nothing happens.
  static void take_turn(const std::string& turn) noexcept;
  // By a job: whether another one that takes little time follows it at once, so that put_off() may be called.
  static bool is_followed() noexcept;
  // By such a job: opened by its thread, with those of other jobs, before that waits or begins a job that may take
  // time, and mostly within a millisecond.
  static void put_off(Letter letter) noexcept;
  // Drops the jobs that no worker has begun, waits for the others, and joins the threads.
  void stop();

 private:
  using Clock = HoldTimes::Clock;

  struct Task {
    std::shared_ptr<Job> job;
    std::string turn;
    std::string kind;
    bool is_long = false;
    bool is_quick = false;
    std::uint64_t number = 0;  // in the order in which tasks were queued
  };
  using Tasks = std::list<Task>;  // which pass from one to another without taking memory

  void run(unsigned number);
  // One without a job: there are none any more. Nothing: none has come until then.
  std::optional<Task> next(unsigned worker, Clock::time_point until, PutOff* put_off);
  void end_turn(const std::string& turn);
  bool has_room(bool is_long) const;
  void queue(Tasks& from, bool is_long, Clock::time_point now);
  Tasks::iterator first_long(Clock::time_point now);
  bool take_first(Clock::time_point now, Task* first);
  struct Running;

  const WorkerFactory factory_;
  const WorkerPoolOptions options_;
  std::vector<base::Thread> threads_;

  std::mutex lock_;  // guards what follows
  std::condition_variable changed_;
  Tasks short_;
  Tasks long_;
  std::uint64_t queued_ = 0;
  HoldTimes times_;
  Clock::time_point last_short_;
  // Of each turn that has a job queued or running: those that wait for it.
  std::unordered_map<std::string, Tasks> turns_;
  unsigned ready_ = 0;
  bool stopping_ = false;
  std::exception_ptr failure_;
};

}  // namespace zelto
