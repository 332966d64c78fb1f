#include "site/session_store.h"

#include <gtest/gtest.h>
#include <korlib/comvariant.h>

#include <atomic>
#include <future>
#include <set>
#include <thread>
#include <vector>

#include "site/session_sweeper.h"

namespace {

using namespace std::chrono_literals;
using zelto::SessionHold;
using zelto::SessionStore;

// A new session that later requests find; its identifier.
std::string keep_new(SessionStore& store, const std::string& address = {}) {
  SessionHold hold = store.open("");
  EXPECT_TRUE(store.add(hold.state(), address));
  std::string id = hold->id;
  EXPECT_EQ(S_OK, hold->put(L"a", korlib::long_variant(1)));
  store.close(std::move(hold));
  return id;
}

TEST(SessionIds, HoldATwentyTwoCharacterRandomNumber) {
  std::set<std::string> ids;
  for (int i = 0; i < 1000; ++i) ids.insert(zelto::make_session_id());
  EXPECT_EQ(1000u, ids.size());
  for (const std::string& id : ids) {
    EXPECT_EQ(22u, id.size());
    EXPECT_EQ(std::string::npos,
              id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"));
  }
}

TEST(SessionStore, FindsASessionAgain) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const SessionHold hold = store.open(id);
  EXPECT_EQ(id, hold->id);
  CComVariant value;
  EXPECT_EQ(S_OK, hold->get(L"A", &value));
  EXPECT_EQ(1, value.lVal);
}

TEST(SessionStore, NeverTakesAnIdentifierFromTheClient) {
  SessionStore store(60s, 20);
  const SessionHold hold = store.open("chosen-by-the-client-22");
  EXPECT_NE("chosen-by-the-client-22", hold->id);
}

TEST(SessionStore, EndsIdentifiersWithItsSuffix) {
  SessionStore store(60s, 20, ".a");
  const std::string id = keep_new(store);
  EXPECT_EQ(24u, id.size());
  EXPECT_TRUE(id.ends_with(".a"));
  EXPECT_EQ(id, store.open(id)->id);
}

// The sweeper comes by every few seconds only.
TEST(SessionStore, DoesNotGiveOutASessionWhoseTimeIsOver) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const auto now = SessionStore::Clock::now();
  EXPECT_EQ(id, store.open(id, now + 19min)->id);
  EXPECT_NE(store.open(id, now + 21min)->id, id);
  EXPECT_EQ(0u, store.size());
}

TEST(SessionStore, FindsARenamedSessionByItsNewIdentifierOnly) {
  SessionStore store(60s, 20);
  const std::string before = keep_new(store);
  SessionHold hold = store.open(before);
  store.rename(hold.state(), store.make_id());
  const std::string after = hold->id;
  EXPECT_NE(after, before);
  store.close(std::move(hold));
  EXPECT_NE(store.open(before)->id, after);
  CComVariant value;
  EXPECT_EQ(S_OK, store.open(after)->get(L"a", &value));
  EXPECT_EQ(1, value.lVal);
  EXPECT_EQ(1u, store.size());
}

TEST(SessionStore, TurnsAwayWhoWaitedWithTheIdentifierBefore) {
  SessionStore store(60s, 20);
  const std::string before = keep_new(store);
  SessionHold hold = store.open(before);
  std::string got;
  std::thread waiter([&] { got = store.open(before)->id; });
  while (hold->lock.waiting() == 0) std::this_thread::yield();
  store.rename(hold.state(), store.make_id());
  const std::string after = hold->id;
  store.close(std::move(hold));
  waiter.join();
  EXPECT_NE(got, before);
  EXPECT_NE(got, after);
}

TEST(SessionStore, KeepsNoSessionThatNobodyAdded) {
  SessionStore store(60s, 20);
  store.close(store.open(""));
  EXPECT_EQ(0u, store.size());
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
  EXPECT_EQ(0u, store.size());
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
  EXPECT_EQ(0u, store.sweep(now + 19min));
  EXPECT_EQ(1u, store.sweep(now + 21min));
  EXPECT_EQ(0u, store.size());
}

TEST(SessionStore, CountsTheTimeFromTheLastUse) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const auto before = SessionStore::Clock::now();
  store.close(store.open(id));
  const auto used = store.open(id)->last_used;
  EXPECT_GE(used, before);
  EXPECT_EQ(0u, store.sweep(used + 20min - 1ns));
  EXPECT_EQ(1u, store.sweep(used + 20min));
}

TEST(SessionStore, SparesASessionInUse) {
  SessionStore store(60s, 20);
  const std::string id = keep_new(store);
  const SessionHold hold = store.open(id);
  EXPECT_EQ(0u, store.sweep(SessionStore::Clock::now() + 24h));
}

TEST(SessionStore, LetsTheOldestNewcomerMakeRoomAtTheLimit) {
  SessionStore store(60s, 20, "", 3);
  const std::string returned = keep_new(store);
  store.close(store.open(returned));
  const std::string oldest = keep_new(store);
  const std::string newer = keep_new(store);
  EXPECT_EQ(0u, store.take_evicted());
  const std::string newest = keep_new(store);
  EXPECT_EQ(3u, store.size());
  EXPECT_EQ(1u, store.take_evicted());
  EXPECT_EQ(0u, store.take_evicted());
  EXPECT_EQ(returned, store.open(returned)->id);
  EXPECT_NE(store.open(oldest)->id, oldest);
  EXPECT_EQ(newer, store.open(newer)->id);
  EXPECT_EQ(newest, store.open(newest)->id);
}

TEST(SessionStore, EndsTheLeastRecentlyUsedWhenAllClientsHaveComeBack) {
  SessionStore store(60s, 20, "", 3);
  const std::string first = keep_new(store);
  const std::string second = keep_new(store);
  const std::string third = keep_new(store);
  for (const std::string& id : {second, third, first}) store.close(store.open(id));
  const std::string fourth = keep_new(store);
  EXPECT_FALSE(store.has(second));
  for (const std::string& id : {first, third, fourth}) EXPECT_TRUE(store.has(id));
}

// Where those who have come back had all places, the session of a newcomer ended with the next newcomer, and nobody
// could log in any more.
TEST(SessionStore, LeavesAQuarterToNewcomers) {
  SessionStore store(60s, 20, "", 8);
  std::vector<std::string> returned;
  for (int i = 0; i < 8; ++i) returned.push_back(keep_new(store));
  for (const std::string& id : returned) store.close(store.open(id));
  const std::string first = keep_new(store);
  const std::string second = keep_new(store);
  EXPECT_TRUE(store.has(first));
  EXPECT_TRUE(store.has(second));
  EXPECT_FALSE(store.has(returned[0]));
  EXPECT_FALSE(store.has(returned[1]));
  const std::string third = keep_new(store);
  EXPECT_FALSE(store.has(first)) << "a flood of newcomers gets no more than that";
  EXPECT_TRUE(store.has(second));
  EXPECT_TRUE(store.has(third));
  for (int i = 2; i < 8; ++i) EXPECT_TRUE(store.has(returned[static_cast<std::size_t>(i)])) << i;
}

// A visitor with a thousand cookie jars locks nobody out but his own.
TEST(SessionStore, EndsASessionOfTheAddressWithTheMost) {
  SessionStore store(60s, 20, "", 4);
  const std::string honest = keep_new(store, "192.0.2.1");
  store.close(store.open(honest));
  std::vector<std::string> many;
  for (int i = 0; i < 3; ++i) many.push_back(keep_new(store, "192.0.2.9"));
  for (const std::string& id : many) store.close(store.open(id));
  const std::string newcomer = keep_new(store, "192.0.2.2");
  EXPECT_FALSE(store.has(many[0]));
  for (const std::string& id : {honest, newcomer, many[1], many[2]}) EXPECT_TRUE(store.has(id));
  const std::string more = keep_new(store, "192.0.2.9");
  EXPECT_FALSE(store.has(many[1]));
  for (const std::string& id : {honest, newcomer, many[2], more}) EXPECT_TRUE(store.has(id));
}

TEST(SessionStore, CountsTheAddressesOfAnIpv6NetworkAsOne) {
  SessionStore store(60s, 20, "", 3);
  const std::string honest = keep_new(store, "2001:db8:1:2::1");
  const std::string one = keep_new(store, "2001:db8:1:1::1");
  const std::string other = keep_new(store, "2001:db8:1:1:ffff::2");
  const std::string newcomer = keep_new(store, "2001:db8:1:3::1");
  EXPECT_FALSE(store.has(one));
  for (const std::string& id : {honest, other, newcomer}) EXPECT_TRUE(store.has(id));
}

// Of addresses with as many sessions: the one that was not used for longest.
TEST(SessionStore, EndsTheLeastRecentlyUsedOfEqualAddresses) {
  SessionStore store(60s, 20, "", 2);
  const std::string first = keep_new(store, "192.0.2.1");
  const std::string second = keep_new(store, "192.0.2.2");
  store.close(store.open(first));
  const std::string third = keep_new(store, "192.0.2.3");
  EXPECT_FALSE(store.has(second));
  EXPECT_TRUE(store.has(first));
  EXPECT_TRUE(store.has(third));
}

TEST(SessionStore, EndsOneOfAnotherAddressWhenThoseOfTheFirstAreInUse) {
  SessionStore store(60s, 20, "", 3);
  const std::string honest = keep_new(store, "192.0.2.1");
  const SessionHold one = store.open(keep_new(store, "192.0.2.9"));
  const SessionHold other = store.open(keep_new(store, "192.0.2.9"));
  const std::string newcomer = keep_new(store, "192.0.2.2");
  EXPECT_FALSE(store.has(honest));
  EXPECT_TRUE(store.has(newcomer));
}

TEST(SessionStore, CountsNoSessionsThatHaveEnded) {
  SessionStore store(60s, 20, "", 3);
  for (int i = 0; i < 2; ++i) {
    SessionHold hold = store.open(keep_new(store, "192.0.2.9"));
    hold->abandoned = true;
    store.close(std::move(hold));
  }
  const std::string one = keep_new(store, "192.0.2.9");
  const std::string first = keep_new(store, "192.0.2.1");
  const std::string second = keep_new(store, "192.0.2.1");
  keep_new(store, "192.0.2.3");
  EXPECT_TRUE(store.has(one));
  EXPECT_FALSE(store.has(first));
  EXPECT_TRUE(store.has(second));
}

TEST(SessionStore, SparesANewcomerInUseAtTheLimit) {
  SessionStore store(60s, 20, "", 1);
  const SessionHold first = store.open("");
  EXPECT_TRUE(store.add(first.state()));
  const SessionHold second = store.open("");
  EXPECT_FALSE(store.add(second.state()));
  EXPECT_EQ(0u, store.take_evicted());
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
  EXPECT_EQ(S_OK, kept->get(L"a", &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST(SessionSweeper, SaysThatSessionsEndedEarly) {
  SessionStore store(60s, 20, "", 1);
  keep_new(store);
  keep_new(store);
  std::promise<std::string> said;
  const zelto::SessionSweeper sweeper(store, 1ms, [&](std::string_view line) { said.set_value(std::string(line)); });
  EXPECT_EQ("zelto: session_limit (1) reached: ended 1 of the addresses with the most sessions",
            said.get_future().get());
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
  EXPECT_EQ(400, count.lVal);
}

}  // namespace
