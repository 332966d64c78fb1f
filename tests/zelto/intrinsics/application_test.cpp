#include "intrinsics/application.h"
#include "korlib/classes/dictionary_fixture.h"
#include "zelto/intrinsics/calls.h"

#include <korlib/safearray.h>
#include <korlib_host/diagnostics.h>

#include <thread>

namespace {

using namespace test;
using namespace std::chrono_literals;

class Application : public testing::Test {
 protected:
  CComPtr<zelto::ApplicationObject> page() {
    return korlib::make<zelto::ApplicationObject>(std::make_shared<zelto::ApplicationHold>(state));
  }
  std::shared_ptr<zelto::ApplicationState> state = std::make_shared<zelto::ApplicationState>(20ms);
};

class Thing final : public korlib::DispatchObject<Thing> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
};

TEST_F(Application, SharesValuesBetweenPages) {
  EXPECT_EQ(S_OK, put(page().get(), L"Value", L"Hits", 7).hr);
  EXPECT_EQ(7, get(page().get(), L"Value", L"hits").value.lVal);
  EXPECT_EQ(1, get(object_of(get(page().get(), L"Contents")), L"Count").value.lVal);
}

TEST_F(Application, RefusesObjectsThatOneThreadOwns) {
  const Answer answer = putref(page().get(), L"Value", L"o", korlib::make<Thing>());
  EXPECT_EQ(E_INVALIDARG, answer.hr);
  EXPECT_EQ(L"The Application keeps plain values and dictionaries only.", answer.description);
}

TEST_F(Application, RefusesSuchObjectsInArraysAndDictionaries) {
  const CComPtr<Thing> thing = korlib::make<Thing>();
  CComSafeArray array(VT_VARIANT, 1);
  CComVariant(static_cast<IDispatch*>(thing.get())).detach_to(array.data<VARIANT>());
  CComVariant list;
  array.detach_to(list.put());
  EXPECT_EQ(E_INVALIDARG, putref(page().get(), L"Value", L"o", list).hr);
  const auto dictionary = new_dictionary();
  EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"o", thing).hr);
  EXPECT_EQ(E_INVALIDARG, putref(page().get(), L"Value", L"o", dictionary).hr);
  EXPECT_EQ(0, get(object_of(get(page().get(), L"Contents")), L"Count").value.lVal);
}

TEST_F(Application, HasItsDictionariesRefuseThemToo) {
  const auto dictionary = new_dictionary();
  EXPECT_EQ(S_OK, putref(page().get(), L"Value", L"d", dictionary).hr);
  const auto shared = object_of(get(page().get(), L"Value", L"d"));
  EXPECT_EQ(E_INVALIDARG, call(shared.get(), L"Add", L"o", korlib::make<Thing>()).hr);
  EXPECT_EQ(S_OK, call(shared.get(), L"Add", L"n", 1).hr);
}

TEST_F(Application, FreesADictionaryThatHoldsItselfWhenItEnds) {
  const std::int64_t before = korlib_host::live_objects();
  {
    const auto dictionary = new_dictionary();
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"me", dictionary).hr);
    EXPECT_EQ(S_OK, putref(page().get(), L"Value", L"d", dictionary).hr);
  }
  EXPECT_EQ(before + 1, korlib_host::live_objects());
  state.reset();
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST_F(Application, KeepsOthersFromChangingValuesWhileLocked) {
  const auto first = page();
  const auto second = page();
  EXPECT_EQ(S_OK, call(first.get(), L"Lock").hr);
  EXPECT_EQ(S_OK, call(first.get(), L"Lock").hr);
  EXPECT_EQ(S_OK, put(first.get(), L"Value", L"a", 1).hr);
  EXPECT_EQ(E_FAIL, put(second.get(), L"Value", L"a", 2).hr);
  EXPECT_EQ(E_FAIL, call(second.get(), L"Lock").hr);
  EXPECT_EQ(S_OK, call(second.get(), L"Unlock").hr);  // not its lock
  EXPECT_EQ(E_FAIL, put(second.get(), L"Value", L"a", 2).hr);
  EXPECT_EQ(1, get(second.get(), L"Value", L"a").value.lVal);
  EXPECT_EQ(S_OK, call(first.get(), L"UnLock").hr);
  EXPECT_EQ(S_OK, put(second.get(), L"Value", L"a", 2).hr);
}

TEST_F(Application, LetsGoOfTheLockWithThePage) {
  {
    const auto ended = page();
    call(ended.get(), L"Lock");
  }
  EXPECT_EQ(S_OK, put(page().get(), L"Value", L"a", 1).hr);
}

TEST_F(Application, CountsRightUnderItsLock) {
  // A waiting thread is woken when the lock is free; if it were not, this would take a day.
  state = std::make_shared<zelto::ApplicationState>(24h);
  put(page().get(), L"Value", L"n", 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 50; ++i) {
        const auto own = page();
        call(own.get(), L"Lock");
        const LONG count = get(own.get(), L"Value", L"n").value.lVal;
        for (int turns = 0; turns < 20; ++turns) std::this_thread::yield();  // the others come to wait
        put(own.get(), L"Value", L"n", count + 1);
        call(own.get(), L"Unlock");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(200, get(page().get(), L"Value", L"n").value.lVal);
}

}  // namespace
