// The threads that answer requests.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "base/thread.h"
#include "http/worker.h"

namespace zelto {

// What a worker is given to do.
class Job {
 public:
  virtual ~Job() = default;
  virtual void run(Worker& worker) = 0;
};

class WorkerPool {
 public:
  WorkerPool(WorkerFactory factory, unsigned threads, std::size_t stack, std::size_t queue);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // Starts the threads and waits until each has made its worker. Throws what the factory threw.
  void start();
  // False when the queue is full or the pool has stopped.
  bool submit(std::shared_ptr<Job> job);
  // Drops the jobs that no worker has begun, waits for the others, and joins the threads.
  void stop();

 private:
  void run();
  std::shared_ptr<Job> next();

  const WorkerFactory factory_;
  const unsigned count_;
  const std::size_t stack_;
  const std::size_t queue_limit_;
  std::vector<base::Thread> threads_;

  std::mutex lock_;  // guards what follows
  std::condition_variable changed_;
  std::deque<std::shared_ptr<Job>> queue_;
  unsigned ready_ = 0;
  bool stopping_ = false;
  std::exception_ptr failure_;
};

}  // namespace zelto
