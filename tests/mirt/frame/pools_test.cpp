// Pools over object kinds made for the test.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <latch>
#include <memory>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include "mirt/frame/pooled_kind.h"
#include "support/late_bound.h"

namespace {

int sections_alive = 0;
thread_local int sections_entered = 0;  // ever

}  // namespace

// These four stand in front of the component's own, to see what is locked, and when.
void InitializeCriticalSection(CRITICAL_SECTION* section) {
  ++sections_alive;
  pthread_mutex_init(section, nullptr);
}
void DeleteCriticalSection(CRITICAL_SECTION* section) {
  --sections_alive;
  pthread_mutex_destroy(section);
}
void EnterCriticalSection(CRITICAL_SECTION* section) {
  ++sections_entered;
  ++test::sections_held;
  pthread_mutex_lock(section);
}
void LeaveCriticalSection(CRITICAL_SECTION* section) {
  --test::sections_held;
  pthread_mutex_unlock(section);
}

namespace test {

ITypeInfo* no_type_info = nullptr;

namespace {

using Plain = GDualImpl<IDispatch, Kind, &no_type_info, &live_count>;

class PlainObject final : public Plain {};

GClassFactoryPooled<Pooled, &live_count> pooled_class;
GClassFactory<PlainObject, &live_count> plain_class;

}  // namespace
}  // namespace test

template <>
constinit IObjectPool* test::Pooled::s_pPool = &test::pooled_class;

namespace test {
namespace {

TEST(Pools, ZeroTheMemoryOfAnObjectBeforeItIsBuilt) {
  CComPtr<IDispatch> object;
  ASSERT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  static_cast<Pooled*>(object.get())->untouched = 0x5A5A;
  IDispatch* const address = object.get();
  object.reset();
  EXPECT_EQ(0x5A5A, last_seen_in_memory);
  ASSERT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  EXPECT_EQ(address, object.get());
  EXPECT_EQ(0, static_cast<Pooled*>(object.get())->untouched);
}

TEST(Pools, KeepABlockWhoseObjectCouldNotBeBuilt) {
  for (IClassFactory* factory :
       {static_cast<IClassFactory*>(&pooled_class), static_cast<IClassFactory*>(&plain_class)}) {
    constructions_to_fail = 1;
    void* object = factory;
    EXPECT_EQ(E_OUTOFMEMORY, factory->CreateInstance(nullptr, IID_IDispatch, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(0, live_count);
  }
  constructions_to_fail = 0;
  CComPtr<IDispatch> after;
  EXPECT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, after.put_void()));
}

// It serves the next object: a lost one could not be given out again.
TEST(Pools, GiveTheBlockOfAFailedConstructionNext) {
  void* address = nullptr;
  {
    CComPtr<IDispatch> object;
    ASSERT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
    address = object.get();
  }
  CComPtr<IDispatch> object;
  constructions_to_fail = 1;
  EXPECT_EQ(E_OUTOFMEMORY, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  EXPECT_EQ(0, constructions_to_fail);
  EXPECT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  EXPECT_EQ(address, object.get());
}

TEST(Pools, CountObjectsAndClassObjectReferences) {
  CComPtr<IDispatch> pooled;
  CComPtr<IDispatch> plain;
  EXPECT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, pooled.put_void()));
  EXPECT_EQ(S_OK, plain_class.CreateInstance(nullptr, IID_IDispatch, plain.put_void()));
  ASSERT_EQ(2, live_count);
  EXPECT_EQ(3u, plain_class.AddRef());
  EXPECT_EQ(2u, plain_class.Release());
  EXPECT_EQ(2u, plain->AddRef());
  EXPECT_EQ(1u, plain->Release());
  plain.reset();
  pooled.reset();
  EXPECT_EQ(0, live_count);
}

TEST(Pools, AreLockedToTakeABlockAndToGiveItBack) {
  CComPtr<IDispatch> object;
  sections_entered = 0;
  ASSERT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  EXPECT_EQ(1, sections_entered);
  object.reset();
  EXPECT_EQ(2, sections_entered);
  EXPECT_EQ(0, sections_held);
  const int before = sections_alive;
  {
    const GClassFactoryPooled<Pooled, &live_count> another;
    EXPECT_EQ(before + 1, sections_alive);
  }
  EXPECT_EQ(before, sections_alive);
}

using Objects = std::vector<CComPtr<IDispatch>>;

Objects many_objects(std::size_t count) {
  Objects objects(count);
  for (auto& object : objects) {
    EXPECT_EQ(S_OK, pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  }
  return objects;
}

std::vector<void*> addresses_of(const Objects& objects) {
  std::vector<void*> addresses;
  for (const auto& object : objects) addresses.push_back(object.get());
  return addresses;
}

// The pool has no limit. What it keeps, the allocator has not: blocks of the same size that are taken from
// there meanwhile are others.
TEST(Pools, KeepEveryBlockAndGiveTheLastOneFirst) {
  constexpr std::size_t kCount = 200;
  Objects objects = many_objects(kCount);
  const std::vector<void*> first = addresses_of(objects);
  for (auto& object : objects) object.reset();

  std::vector<std::unique_ptr<void, void (*)(void*)>> others;
  for (std::size_t i = 0; i < 2 * kCount; ++i) others.emplace_back(std::malloc(sizeof(Pooled)), std::free);
  const std::set<void*> kept(first.begin(), first.end());
  EXPECT_EQ(kCount, kept.size());
  for (const auto& other : others) EXPECT_FALSE(kept.contains(other.get()));

  objects = many_objects(kCount);
  EXPECT_EQ(std::vector<void*>(first.rbegin(), first.rend()), addresses_of(objects));
}

// An object may be released on another thread than made it, and its block serves a third.
TEST(Pools, AreOneForAllThreads) {
  constexpr std::size_t kCount = 50;
  Objects objects;
  std::vector<void*> first;
  std::thread([&] {
    objects = many_objects(kCount);
    first = addresses_of(objects);
  }).join();
  std::thread([&] {
    for (auto& object : objects) object.reset();
  }).join();
  std::vector<void*> again;
  std::thread([&] { again = addresses_of(objects = many_objects(kCount)); }).join();
  EXPECT_EQ(std::vector<void*>(first.rbegin(), first.rend()), again);
  objects.clear();
  EXPECT_EQ(0, live_count);
}

// Blocks go round between threads that only make objects and threads that only release them; each object
// comes zeroed and is what its maker made of it.
TEST(Pools, TakeBlocksBackFromAnyThread) {
  constexpr int kPairs = 3;
  constexpr int kRounds = 200;
  constexpr std::size_t kCount = 20;
  std::atomic<int> faults = 0;
  std::vector<std::thread> threads;
  for (int pair = 1; pair <= kPairs; ++pair) {
    threads.emplace_back([&faults, pair] {
      for (int round = 0; round < kRounds; ++round) {
        Objects objects = many_objects(kCount);
        for (auto& object : objects) {
          faults += static_cast<Pooled*>(object.get())->untouched != 0;
          static_cast<Pooled*>(object.get())->untouched = pair;
        }
        std::thread([&faults, pair, taken = std::move(objects)]() mutable {
          for (auto& object : taken) {
            faults += static_cast<Pooled*>(object.get())->untouched != pair;
            object.reset();
          }
        }).join();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, faults);
  EXPECT_EQ(0, live_count);
}

TEST(Pools, GiveAnObjectToOneThreadOnly) {
  constexpr int kThreads = 4;
  std::atomic<int> faults = 0;
  std::latch together(kThreads);
  std::vector<std::thread> threads;
  for (int number = 1; number <= kThreads; ++number) {
    threads.emplace_back([&, number] {
      together.arrive_and_wait();
      for (int round = 0; round < 2000; ++round) {
        CComPtr<IDispatch> objects[3];
        for (auto& object : objects) {
          if (FAILED(pooled_class.CreateInstance(nullptr, IID_IDispatch, object.put_void()))) return void(++faults);
          int& mine = static_cast<Pooled*>(object.get())->untouched;
          faults += mine != 0;
          mine = number;
        }
        for (auto& object : objects) faults += static_cast<Pooled*>(object.get())->untouched != number;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, faults);
  EXPECT_EQ(0, live_count);
}

}  // namespace
}  // namespace test
