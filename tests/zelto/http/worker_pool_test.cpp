#include "http/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
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

// Notes how often it has rested.
class RestingWorker final : public zelto::Worker {
 public:
  explicit RestingWorker(std::atomic<int>& rests) : rests_(rests) {}
  void handle(zelto::HttpRequest&& /*request*/, zelto::ResponseSink& /*sink*/) override {}
  void rest() override {
    ++rests_;
    rests_.notify_all();
  }

 private:
  std::atomic<int>& rests_;
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

class PutOffTest : public WorkerPoolTest {
 protected:
  void SetUp() override { one.start(); }

  // A job that puts a note off where that may be.
  std::shared_ptr<zelto::Job> putting_off(const std::string& what) {
    return job([this, what] {
      note(what);
      if (!WorkerPool::is_followed()) return note(what + " alone");
      auto noting = std::make_shared<std::function<void()>>([this, what] { note("later: " + what); });
      WorkerPool::put_off({noting, [](void* body) noexcept { (*static_cast<std::function<void()>*>(body))(); }});
    });
  }
  void note(const std::string& what) {
    {
      const std::lock_guard lock(lock_);
      order.push_back(what);
    }
    ++notes;
    notes.notify_all();
  }
  // Of the order when there are so many.
  std::vector<std::string> first(int count) {
    for (int now = notes; now < count; now = notes) notes.wait(now);
    const std::lock_guard lock(lock_);
    return order;
  }
  // So that the worker finds all that are submitted meanwhile.
  void hold() {
    EXPECT_EQ(Submitted::queued, one.submit(holding()));
    gate.wait_for(1);
  }
  // Until it has taken next to no time.
  void make_known(const std::string& kind) {
    for (int i = 0; i < 60; ++i) {
      std::atomic<bool> over = false;
      EXPECT_EQ(Submitted::queued, one.submit(job([&] {
                                                over = true;
                                                over.notify_all();
                                              }),
                                              {}, kind));
      over.wait(false);
    }
  }

  std::atomic<int> notes = 0;
  WorkerPool one{[] { return std::make_unique<IdleWorker>(); }, {.threads = 1, .queue = 20}};
};

TEST_F(PutOffTest, IsDoneBeforeAWorkerWaits) {
  make_known("quick");
  hold();
  for (const std::string what : {"a", "b"}) EXPECT_EQ(Submitted::queued, one.submit(putting_off(what), {}, "quick"));
  gate.open();
  EXPECT_EQ((std::vector<std::string>{"a", "b", "b alone", "later: a"}), first(4));
}

TEST_F(PutOffTest, IsDoneBeforeWhatMayTakeTime) {
  make_known("quick");
  hold();
  for (const std::string what : {"a", "b"}) EXPECT_EQ(Submitted::queued, one.submit(putting_off(what), {}, "quick"));
  EXPECT_EQ(Submitted::queued, one.submit(putting_off("unknown"), {}, "new"));
  gate.open();
  EXPECT_EQ((std::vector<std::string>{"a", "b", "b alone", "later: a", "unknown", "unknown alone"}), first(6));
}

TEST_F(PutOffTest, IsDoneForAFewJobsAtATime) {
  make_known("quick");
  hold();
  for (int i = 0; i < 20; ++i) EXPECT_EQ(Submitted::queued, one.submit(putting_off("a"), {}, "quick"));
  gate.open();
  std::size_t waiting = 0;
  for (const std::string& what : first(40)) {
    if (what == "a") ++waiting;
    if (what == "later: a" || what == "a alone") --waiting;
    EXPECT_LE(waiting, 9u);
  }
  EXPECT_EQ(0u, waiting);
}

TEST(PutOff, TakesMoreOnlyForAShortTime) {
  zelto::PutOff put_off;
  const zelto::PutOff::Clock::time_point now{std::chrono::hours(1)};
  EXPECT_TRUE(put_off.takes_more(now));
  const auto nothing = std::make_shared<int>(0);
  put_off.add({nothing, [](void*) noexcept {}}, now);
  EXPECT_TRUE(put_off.takes_more(now + std::chrono::microseconds(400)));
  EXPECT_FALSE(put_off.takes_more(now + std::chrono::milliseconds(1)));
  put_off.do_all();
  EXPECT_TRUE(put_off.takes_more(now + std::chrono::milliseconds(1)));
  EXPECT_EQ(1, nothing.use_count());
}

TEST_F(WorkerPoolTest, HasAWorkerRestOnceItHasNothingMoreToDo) {
  using std::chrono::milliseconds;
  std::atomic<int> rests = 0;
  WorkerPool one([&] { return std::make_unique<RestingWorker>(rests); },
                 {.threads = 1, .rest_after = milliseconds(0), .rest_every = milliseconds(0)});
  one.start();
  EXPECT_EQ(Submitted::queued, one.submit(holding()));
  EXPECT_EQ(Submitted::queued, one.submit(noting("second")));
  gate.wait_for(1);
  EXPECT_EQ(0, rests) << "it has not had a job, and has two now";
  gate.open();
  rests.wait(0);
  EXPECT_EQ(Submitted::queued, one.submit(noting("third")));
  rests.wait(1);
  one.stop();
  EXPECT_EQ(2, rests);
  EXPECT_EQ((std::vector<std::string>{"second", "third"}), order);
}

TEST_F(WorkerPoolTest, HasAWorkerNotRestAgainAtOnce) {
  std::atomic<int> rests = 0;
  WorkerPool one([&] { return std::make_unique<RestingWorker>(rests); },
                 {.threads = 1, .rest_after = std::chrono::milliseconds(0), .rest_every = std::chrono::hours(1)});
  one.start();
  EXPECT_EQ(Submitted::queued, one.submit(noting("first")));
  rests.wait(0);
  std::atomic<int> runs = 0;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(Submitted::queued, one.submit(job([&] {
      ++runs;
      runs.notify_all();
    })));
    runs.wait(i);
  }
  one.stop();
  EXPECT_EQ(1, rests);
}

// Jobs of a kind that has never ended are long.
TEST_F(WorkerPoolTest, HasLongJobsLeaveAWorkerToShortOnes) {
  WorkerPool fair([] { return std::make_unique<IdleWorker>(); },
                  {.threads = 2, .queue = 8, .left_for = std::chrono::hours(1)});
  fair.start();
  EXPECT_EQ(Submitted::queued, fair.submit(noting("first")));
  EXPECT_EQ(Submitted::queued, fair.submit(holding(), {}, "long"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::queued, fair.submit(noting("long"), {}, "long"));
  EXPECT_EQ(Submitted::queued, fair.submit(noting("last")));
  last.wait_here();  // no worker would be left for it
  {
    const std::lock_guard lock(lock_);
    EXPECT_EQ((std::vector<std::string>{"first", "last"}), order);
  }
  EXPECT_EQ(Submitted::queued, fair.submit(job([&] { done.wait_here(); }), {}, "long"));
  gate.open();
  done.wait_for(1);  // what was left waiting has its turn
  done.open();
  fair.stop();
  EXPECT_EQ((std::vector<std::string>{"first", "last", "long"}), order);
}

TEST_F(WorkerPoolTest, GivesLongJobsAllWorkersWhileNoShortOneComes) {
  WorkerPool fair([] { return std::make_unique<IdleWorker>(); }, {.threads = 2, .queue = 8, .left_for = {}});
  fair.start();
  EXPECT_EQ(Submitted::queued, fair.submit(holding(), {}, "long"));
  EXPECT_EQ(Submitted::queued, fair.submit(holding(), {}, "other"));
  gate.wait_for(2);
  gate.open();
}

TEST_F(WorkerPoolTest, GivesThemNotAllWhereTheyMayHoldThem) {
  WorkerPool fair([] { return std::make_unique<IdleWorker>(); }, {.threads = 2, .queue = 8, .left_for = {}});
  fair.start();
  EXPECT_EQ(Submitted::queued, fair.submit(holding(), {}, "long"));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::queued, fair.submit(noting("last"), {}, "long"));
  // Another kind that nobody knows yet goes past it, and so does a short one.
  for (const char* kind : {"other", ""}) {
    EXPECT_EQ(Submitted::queued, fair.submit(job([&] { done.wait_here(); }), {}, kind));
    done.wait_for(*kind ? 1 : 2);
    done.open();
  }
  {
    const std::lock_guard lock(lock_);
    EXPECT_TRUE(order.empty());
  }
  gate.open();
  last.wait_here();
  fair.stop();
}

TEST_F(WorkerPoolTest, HasOthersWaitForATurnThatAJobTookMeanwhile) {
  EXPECT_EQ(Submitted::queued, pool.submit(job([&] {
    WorkerPool::take_turn("one");
    gate.wait_here();
  })));
  gate.wait_for(1);
  EXPECT_EQ(Submitted::waits_for_turn, pool.submit(noting("last"), "one"));
  gate.open();
  last.wait_here();
  WorkerPool::take_turn("two");  // by no job
  EXPECT_EQ(Submitted::queued, pool.submit(noting("other"), "two"));
}

TEST_F(WorkerPoolTest, KeepsAPartOfTheQueueForShortJobs) {
  WorkerPool fair([] { return std::make_unique<IdleWorker>(); }, {.threads = 1, .queue = 4});
  fair.start();
  EXPECT_EQ(Submitted::queued, fair.submit(holding()));
  gate.wait_for(1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Submitted::queued, fair.submit(noting("long"), {}, "long"));
  EXPECT_EQ(Submitted::refused, fair.submit(noting("long"), {}, "long"));
  EXPECT_EQ(Submitted::queued, fair.submit(noting("short")));
  EXPECT_EQ(Submitted::refused, fair.submit(noting("short")));
  gate.open();
}

}  // namespace
}  // namespace zelto_test
