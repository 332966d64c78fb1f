#include "app/session_store.h"

#include <gtest/gtest.h>
#include <korlib/comvariant.h>

#include <atomic>
#include <future>
#include <set>
#include <thread>
#include <vector>

#include "app/session_sweeper.h"

namespace {

using namespace std::chrono_literals;
using zelto::SessionHold;
using zelto::SessionStore;

// A new session that later requests find; its identifier.
std::string keep_new(SessionStore& store) {
  SessionHold hold = store.open("");
  store.add(hold.state());
  std::string id = hold->id;
  EXPECT_EQ(hold->put(L"a", korlib::long_variant(1)), S_OK);
  store.close(std::move(hold));
  return id;
}

TEST(SessionIds, HoldATwentyTwoCharacterRandomNumber) {
  std::set<std::string> ids;
  for (int i = 0; i < 1000; ++i) ids.insert(zelto::make_session_id());
  EXPECT_EQ(ids.size(), 1000u);
  for (const std::string& id : ids) {
    EXPECT_EQ(id.size(), 22u);
    EXPECT_EQ(id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
              std::string::npos);
  }
}

TEST(SessionStore, FindsASessionAgain) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const SessionHold hold = store.open(id);
  EXPECT_EQ(hold->id, id);
  CComVariant value;
  EXPECT_EQ(hold->get(L"A", &value), S_OK);
  EXPECT_EQ(value.lVal, 1);
}

TEST(SessionStore, NeverTakesAnIdentifierFromTheClient) {
  SessionStore store(60s, 20);
  const SessionHold hold = store.open("chosen-by-the-client-22");
  EXPECT_NE(hold->id, "chosen-by-the-client-22");
}

TEST(SessionStore, EndsIdentifiersWithItsSuffix) {
  SessionStore store(60s, 20, ".a");
  const std::string id = keep_new(store);
  EXPECT_EQ(id.size(), 24u);
  EXPECT_TRUE(id.ends_with(".a"));
  EXPECT_EQ(store.open(id)->id, id);
}

// The sweeper comes by every few seconds only.
TEST(SessionStore, DoesNotGiveOutASessionWhoseTimeIsOver) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const auto now = SessionStore::Clock::now();
  EXPECT_EQ(store.open(id, now + 19min)->id, id);
  EXPECT_NE(store.open(id, now + 21min)->id, id);
  EXPECT_EQ(store.size(), 0u);
}

TEST(SessionStore, FindsARenamedSessionByItsNewIdentifierOnly) {
  SessionStore store(60s, 20);
  const std::string before = keep_new(store);
  SessionHold hold = store.open(before);
  store.rename(hold.state());
  const std::string after = hold->id;
  EXPECT_NE(after, before);
  store.close(std::move(hold));
  EXPECT_NE(store.open(before)->id, after);
  CComVariant value;
  EXPECT_EQ(store.open(after)->get(L"a", &value), S_OK);
  EXPECT_EQ(value.lVal, 1);
  EXPECT_EQ(store.size(), 1u);
}

TEST(SessionStore, TurnsAwayWhoWaitedWithTheIdentifierBefore) {
  SessionStore store(60s, 20);
  const std::string before = keep_new(store);
  SessionHold hold = store.open(before);
  std::string got;
  std::thread waiter([&] { got = store.open(before)->id; });
  while (hold->lock.waiting() == 0) std::this_thread::yield();
  store.rename(hold.state());
  const std::string after = hold->id;
  store.close(std::move(hold));
  waiter.join();
  EXPECT_NE(got, before);
  EXPECT_NE(got, after);
}

TEST(SessionStore, KeepsNoSessionThatNobodyAdded) {
  SessionStore store(60s, 20);
  store.close(store.open(""));
  EXPECT_EQ(store.size(), 0u);
}

TEST(SessionStore, RefusesARequestThatWaitsTooLong) {
  SessionStore store(5ms, 20);
  const std::string id = keep_new(store);
  const SessionHold first = store.open(id);
  EXPECT_FALSE(store.open(id));
}

TEST(SessionStore, EndsAnAbandonedSessionWithItsRequest) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  SessionHold hold = store.open(id);
  hold->abandoned = true;
  store.close(std::move(hold));
  EXPECT_EQ(store.size(), 0u);
  EXPECT_NE(store.open(id)->id, id);
}

TEST(SessionStore, GivesAWaitingRequestANewSessionWhenTheOldOneEnds) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  SessionHold hold = store.open(id);
  std::string got;
  std::thread waiting([&] { got = store.open(id)->id; });
  while (hold->lock.waiting() == 0) std::this_thread::yield();
  hold->abandoned = true;
  store.close(std::move(hold));
  waiting.join();
  EXPECT_FALSE(got.empty());
  EXPECT_NE(got, id);
}

TEST(SessionStore, SweepsWhatWasNotUsedForItsTime) {
  SessionStore store(60s, 20);
  keep_new(store);
  const auto now = SessionStore::Clock::now();
  EXPECT_EQ(store.sweep(now + 19min), 0u);
  EXPECT_EQ(store.sweep(now + 21min), 1u);
  EXPECT_EQ(store.size(), 0u);
}

TEST(SessionStore, CountsTheTimeFromTheLastUse) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const auto before = SessionStore::Clock::now();
  store.close(store.open(id));
  const auto used = store.open(id)->last_used;
  EXPECT_GE(used, before);
  EXPECT_EQ(store.sweep(used + 20min - 1ns), 0u);
  EXPECT_EQ(store.sweep(used + 20min), 1u);
}

TEST(SessionStore, SparesASessionInUse) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const SessionHold hold = store.open(id);
  EXPECT_EQ(store.sweep(SessionStore::Clock::now() + 24h), 0u);
}

TEST(SessionStore, LetsTheOldestNewcomerMakeRoomAtTheLimit) {
  SessionStore store(60s, 20, "", 3);
  const std::string returned = keep_new(store);
  store.close(store.open(returned));
  const std::string oldest = keep_new(store);
  const std::string newer = keep_new(store);
  EXPECT_EQ(store.take_evicted(), 0u);
  const std::string newest = keep_new(store);
  EXPECT_EQ(store.size(), 3u);
  EXPECT_EQ(store.take_evicted(), 1u);
  EXPECT_EQ(store.take_evicted(), 0u);
  EXPECT_EQ(store.open(returned)->id, returned);
  EXPECT_NE(store.open(oldest)->id, oldest);
  EXPECT_EQ(store.open(newer)->id, newer);
  EXPECT_EQ(store.open(newest)->id, newest);
}

TEST(SessionStore, EndsNoSessionThatSomebodyCameBackToAtTheLimit) {
  SessionStore store(60s, 20, "", 2);
  const std::string one = keep_new(store);
  const std::string other = keep_new(store);
  store.close(store.open(one));
  SessionHold used = store.open(other);  // renamed, so that nobody has come back to what it is called now
  store.rename(used.state());
  const SessionHold refused = store.open("");
  EXPECT_FALSE(store.add(refused.state()));
  EXPECT_EQ(store.size(), 2u);
  EXPECT_EQ(store.open(one)->id, one);
  used->abandoned = true;
  store.close(std::move(used));
  EXPECT_TRUE(store.add(refused.state()));
}

TEST(SessionStore, SparesANewcomerInUseAtTheLimit) {
  SessionStore store(60s, 20, "", 1);
  const SessionHold first = store.open("");
  EXPECT_TRUE(store.add(first.state()));
  const SessionHold second = store.open("");
  EXPECT_FALSE(store.add(second.state()));
  EXPECT_EQ(store.take_evicted(), 0u);
}

TEST(SessionStore, EndsWhatASessionHoldsWhenItMakesRoom) {
  SessionStore store(60s, 20, "", 1);
  SessionHold first = store.open("");
  store.add(first.state());
  first->put(L"a", korlib::long_variant(1));
  const auto kept = first.state();
  store.close(std::move(first));
  keep_new(store);
  CComVariant value;
  EXPECT_EQ(kept->get(L"a", &value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(SessionSweeper, SaysThatSessionsEndedEarly) {
  SessionStore store(60s, 20, "", 1);
  keep_new(store);
  keep_new(store);
  std::promise<std::string> said;
  const zelto::SessionSweeper sweeper(store, 1ms, [&](std::string_view line) { said.set_value(std::string(line)); });
  EXPECT_EQ(said.get_future().get(), "zelto: session_limit (1) reached: ended 1 whose clients had not come back");
}

TEST(SessionStore, NeverLetsTwoRequestsOfASessionOverlap) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 100; ++i) {
        SessionHold hold = store.open(id);
        if (inside.fetch_add(1) != 0) overlapped = true;
        CComVariant count;
        hold->get(L"count", &count);
        hold->put(L"count", korlib::long_variant(count.vt == VT_I4 ? count.lVal + 1 : 1));
        inside.fetch_sub(1);
        store.close(std::move(hold));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(overlapped);
  CComVariant count;
  store.open(id)->get(L"count", &count);
  EXPECT_EQ(count.lVal, 400);
}

}  // namespace
