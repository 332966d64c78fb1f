#include "http/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

using zelto::WorkerPool;
using Submitted = WorkerPool::Submitted;

class IdleWorker final : public zelto::Worker {
 public:
  void handle(zelto::HttpRequest&& /*request*/, zelto::ResponseSink& /*sink*/) override {}
};

class FunctionJob final : public zelto::Job {
 public:
  explicit FunctionJob(std::function<void()> body) : body_(std::move(body)) {}
  void run(zelto::Worker& /*worker*/) override { body_(); }

 private:
  std::function<void()> body_;
};

class WorkerPoolTest : public ::testing::Test {
 protected:
  void SetUp() override { pool.start(); }

  std::shared_ptr<zelto::Job> job(std::function<void()> body) { return std::make_shared<FunctionJob>(std::move(body)); }
  std::shared_ptr<zelto::Job> noting(const std::string& what) {
    return job([this, what] {
      const std::lock_guard lock(lock_);
      order.push_back(what);
      if (what == "last") last.open();
    });
  }
  // Waits for the gate, and then fails or not.
  std::shared_ptr<zelto::Job> holding(bool fails = false) {
    return job([this, fails] {
      gate.wait_here();
      if (fails) throw std::bad_alloc();
    });
  }

  std::mutex lock_;
  std::vector<std::string> order;
  Gate gate;
  Gate last;
  Gate done;
  WorkerPool pool{[] { return std::make_unique<IdleWorker>(); }, {.threads = 2, .queue = 3, .turn_queue = 2}};
};

TEST_F(WorkerPoolTest, HasJobsOfOneTurnWaitWithoutAWorker) {
  EXPECT_EQ(Submitted::queued, pool.submit(holding(), "one"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(noting("second"), "one"));
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(noting("last"), "one"));
  EXPECT_EQ(Submitted::refused, pool.submit(noting("third"), "one"));
  // The other worker is free for others.
  EXPECT_EQ(Submitted::queued, pool.submit(noting("other turn"), "two"));
  EXPECT_EQ(Submitted::queued, pool.submit(job([&] { done.wait_here(); })));
  done.wait_for(1);
  done.open();
  EXPECT_EQ(std::vector<std::string>{"other turn"}, order);
  gate.open();
  last.wait_here();
  EXPECT_EQ((std::vector<std::string>{"other turn", "second", "last"}), order);
}

TEST_F(WorkerPoolTest, EndsATurnThatFailed) {
  EXPECT_EQ(Submitted::queued, pool.submit(holding(true), "one"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(noting("last"), "one"));
  gate.open();
  last.wait_here();
}

TEST_F(WorkerPoolTest, GivesBackAJobThatWaitsForItsTurn) {
  const auto held = holding();
  const auto waiting = noting("waiting");
  EXPECT_EQ(Submitted::queued, pool.submit(held, "one"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(waiting, "one"));
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(noting("last"), "one"));
  EXPECT_TRUE(pool.withdraw(*waiting, "one"));
  EXPECT_FALSE(pool.withdraw(*waiting, "one"));
  EXPECT_FALSE(pool.withdraw(*held, "one"));
  EXPECT_FALSE(pool.withdraw(*held, "none"));
  EXPECT_EQ(1, waiting.use_count());
  gate.open();
  last.wait_here();
  EXPECT_EQ(std::vector<std::string>{"last"}, order);
}

TEST_F(WorkerPoolTest, DropsWhatWaitsWhenItStops) {
  const auto waiting = noting("waiting");
  EXPECT_EQ(Submitted::queued, pool.submit(holding(), "one"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(waiting, "one"));
  std::jthread stopper([&] { pool.stop(); });
  while (pool.submit(noting("late")) != Submitted::refused) std::this_thread::yield();
  gate.open();
  stopper.join();
  EXPECT_EQ(1, waiting.use_count());
  EXPECT_EQ(0, std::ranges::count(order, "waiting"));
}

}  // namespace
}  // namespace zelto_test
