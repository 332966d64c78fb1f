// Memory that runs out in the store of the sessions: what was asked for is done or not done, and no lock, place or
// session is left behind.
#include <gtest/gtest.h>
#include <korlib/comvariant.h>

#include <chrono>
#include <new>
#include <optional>
#include <string>

#include "site/session_store.h"
#include "support/failing_allocations.h"

namespace {

using namespace std::chrono_literals;
using test::each_allocation_failing;
using test::FailingAllocation;
using zelto::SessionHold;
using zelto::SessionStore;

constexpr int kForAWhile = 3;

std::string keep_new(SessionStore& store, const std::string& address) {
  SessionHold hold = store.open("");
  EXPECT_TRUE(store.add(hold.state(), address));
  EXPECT_EQ(S_OK, hold->put(L"a", korlib::long_variant(1)));
  std::string id = hold->id;
  store.close(std::move(hold));
  return id;
}

// False when there was no memory for it.
template <class Step>
bool has_memory(Step step) {
  try {
    step();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool is_free(SessionStore& store, const std::string& id) {
  const SessionHold hold = store.open(id);
  return hold && hold->id == id;
}

// To open one that is free takes no memory, to wait for one that is in use does.
TEST(FailingSessions, AreLeftToWhoHasThemWhereThereIsNoMemoryToWait) {
  for (const int times : {1, kForAWhile}) {
    SessionStore store(0ms, 20);
    const std::string id = keep_new(store, "192.0.2.1");
    const int failures = each_allocation_failing([&](int n) {
      bool failed = false;
      {
        const SessionHold user = store.open(id);
        const FailingAllocation failing(n, times);
        has_memory([&] { EXPECT_FALSE(store.open(id)); });
        failed = failing.has_failed();
      }
      EXPECT_TRUE(is_free(store, id)) << n;
      return failed;
    });
    EXPECT_GT(failures, 0);
  }
}

// Of an address with others, whose place changes then.
TEST(FailingSessions, EndWhenTheirTimeIsOverOrAreLeftFree) {
  const auto later = SessionStore::Clock::now() + 1h;
  for (const int others : {0, 2}) {
    each_allocation_failing([&](int n) {
      SessionStore store(0ms, 20);
      const std::string id = keep_new(store, "192.0.2.1");
      for (int i = 0; i < others; ++i) keep_new(store, "192.0.2.1");
      bool failed = false;
      {
        std::optional<SessionHold> hold;
        const FailingAllocation failing(n);
        has_memory([&] { hold.emplace(store.open(id, later)); });
        failed = failing.has_failed();
      }
      const SessionHold again = store.open(id, later);
      EXPECT_TRUE(again) << n;
      EXPECT_EQ(0u + others, store.size()) << n;
      return failed;
    });
  }
}

TEST(FailingSessions, AreKeptOnceOrNotAtAll) {
  each_allocation_failing([&](int n) {
    SessionStore store(0ms, 20);
    keep_new(store, "192.0.2.1");
    bool failed = false;
    bool was_kept = false;
    std::string id;
    {
      SessionHold hold = store.open("");
      id = hold->id;
      const std::string address = "2001:db8::1234:5678:9abc:def0";
      const FailingAllocation failing(n);
      was_kept = has_memory([&] { EXPECT_TRUE(store.add(hold.state(), address)); });
      failed = failing.has_failed();
    }
    EXPECT_EQ(was_kept ? 2u : 1u, store.size()) << n;
    EXPECT_EQ(was_kept, is_free(store, id)) << n;
    return failed;
  });
}

// The one that gives way goes, or stays as it was; neither way is it in use for good.
TEST(FailingSessions, GiveWayOrStay) {
  each_allocation_failing([&](int n) {
    SessionStore store(0ms, 20, {}, 3);
    const std::string first = keep_new(store, "192.0.2.1");
    keep_new(store, "192.0.2.1");
    keep_new(store, "192.0.2.1");
    bool failed = false;
    {
      SessionHold hold = store.open("");
      const FailingAllocation failing(n);
      has_memory([&] { EXPECT_TRUE(store.add(hold.state(), "192.0.2.3")); });
      failed = failing.has_failed();
    }
    SessionHold old = store.open(first);
    EXPECT_TRUE(old) << n;
    if (old && old->id == first) {
      CComVariant value;
      EXPECT_EQ(S_OK, old->get(L"a", &value));
      EXPECT_EQ(1, value.lVal) << n;
    }
    SessionHold fresh = store.open("");
    EXPECT_TRUE(store.add(fresh.state(), "192.0.2.4")) << n;
    EXPECT_EQ(3u, store.size()) << n;
    return failed;
  });
}

TEST(FailingSessions, AreFoundByTheirOldOrTheirNewIdentifier) {
  const int failures = each_allocation_failing([&](int n) {
    SessionStore store(0ms, 20);
    const std::string before = keep_new(store, "192.0.2.1");
    bool failed = false;
    bool was_renamed = false;
    std::string after;
    {
      SessionHold hold = store.open(before);
      {
        const FailingAllocation failing(n);
        was_renamed = has_memory([&] { store.rename(hold.state(), store.make_id()); });
        failed = failing.has_failed();
      }
      after = hold->id;
    }
    EXPECT_EQ(was_renamed, before != after) << n;
    EXPECT_TRUE(is_free(store, after)) << n;
    EXPECT_EQ(1u, store.size()) << n;
    return failed;
  });
  EXPECT_GT(failures, 0);
}

// Nobody can do anything about an end that fails.
TEST(FailingSessions, EndWithoutAskingForMemory) {
  for (const int others : {0, 1, 2}) {
    SessionStore store(0ms, 20);
    const std::string id = keep_new(store, "192.0.2.1");
    for (int i = 0; i < others; ++i) keep_new(store, "192.0.2.1");
    SessionHold hold = store.open(id);
    hold->abandoned = true;
    bool has_ended = false;
    {
      const FailingAllocation failing(0, FailingAllocation::kAll);
      has_ended = has_memory([&] { store.close(std::move(hold)); });
    }
    EXPECT_TRUE(has_ended) << others;
    EXPECT_FALSE(store.has(id)) << others;
    EXPECT_EQ(0u + others, store.size());
  }
}

TEST(FailingSessions, AreSweptLaterWhenThereIsNoMemory) {
  const auto later = SessionStore::Clock::now() + 1h;
  each_allocation_failing([&](int n) {
    SessionStore store(0ms, 20);
    keep_new(store, "192.0.2.1");
    keep_new(store, "192.0.2.1");
    bool failed = false;
    {
      const FailingAllocation failing(n, kForAWhile);
      has_memory([&] { store.sweep(later); });
      failed = failing.has_failed();
    }
    store.sweep(later);
    EXPECT_EQ(0u, store.size()) << n;
    return failed;
  });
}

}  // namespace
