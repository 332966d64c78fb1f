#include <korlib_host/dictionaries.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <thread>

#include <korlib_host/diagnostics.h>
#include <korlib_host/dispatch_object.h>

#include "korlib/classes/dictionary_fixture.h"

namespace {

using test::Answer;
using test::call;
using test::new_dictionary;
using test::put;

// An object whose references are counted by one thread only.
class Thing final : public korlib::DispatchObject<Thing> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
};

CComVariant object_value(IUnknown* object) { return CComVariant(object); }

CComVariant array_of(const CComVariant& element) {
  CComSafeArray array(VT_VARIANT, 1);
  CComVariant copy(element);
  copy.detach_to(array.data<VARIANT>());
  CComVariant made;
  array.detach_to(made.put());
  return made;
}

constexpr const wchar_t* kRefusal =
    L"A dictionary that the Application keeps takes plain values and dictionaries only.";

void expect_refused(const Answer& answer) {
  EXPECT_EQ(E_INVALIDARG, answer.hr);
  EXPECT_EQ(kRefusal, answer.description);
}

class SharedDictionary : public test::DictionaryFixture {
 protected:
  bool share() { return korlib_host::share(object_value(dictionary_.get())); }
  CComPtr<Thing> thing_ = korlib::make<Thing>();
};

TEST_F(SharedDictionary, RefusesObjectsAtEveryDoor) {
  EXPECT_EQ(S_OK, call(object_, L"Add", L"a", 1).hr);
  ASSERT_TRUE(share());
  expect_refused(call(object_, L"Add", L"b", thing_));
  expect_refused(put(object_, L"Item", L"a", thing_));
  expect_refused(test::putref(object_, L"Item", L"a", thing_));
  expect_refused(call(object_, L"Add", thing_, L"b"));
  expect_refused(test::get(object_, L"Item", thing_));
  expect_refused(put(object_, L"Key", L"a", thing_));
  expect_refused(call(object_, L"Add", L"b", array_of(object_value(thing_.get()))));
  expect_refused(call(object_, L"Add", L"b", array_of(array_of(object_value(thing_.get())))));
  EXPECT_EQ(L"a", list(L"Keys"));
  EXPECT_EQ(L"1", list(L"Items"));
}

TEST_F(SharedDictionary, TakesPlainValuesAndDictionaries) {
  ASSERT_TRUE(share());
  EXPECT_EQ(S_OK, call(object_, L"Add", L"a", array_of(CComVariant(L"text"))).hr);
  EXPECT_EQ(S_OK, call(object_, L"Add", L"b", new_dictionary()).hr);
  EXPECT_EQ(S_OK, call(object_, L"Add", new_dictionary(), 2).hr);
  EXPECT_EQ(3, count());
}

TEST_F(SharedDictionary, IsNotMadeOfOneThatHoldsAnObject) {
  const auto inner = new_dictionary();
  EXPECT_EQ(S_OK, call(object_, L"Add", L"inner", inner).hr);
  EXPECT_EQ(S_OK, call(inner.get(), L"Add", L"o", thing_).hr);
  EXPECT_FALSE(share());
  EXPECT_EQ(S_OK, call(object_, L"Add", L"o", thing_).hr) << "it stays one request's own";
}

TEST_F(SharedDictionary, SharesWhatItHoldsAndWhatIsAddedLater) {
  const auto inner = new_dictionary();
  const auto key = new_dictionary();
  const auto later = new_dictionary();
  const auto in_array = new_dictionary();
  EXPECT_EQ(S_OK, call(object_, L"Add", L"inner", inner).hr);
  EXPECT_EQ(S_OK, call(object_, L"Add", key, 1).hr);
  EXPECT_EQ(S_OK, call(object_, L"Add", L"list", array_of(object_value(in_array.get()))).hr);
  ASSERT_TRUE(share());
  EXPECT_EQ(S_OK, call(inner.get(), L"Add", L"later", later).hr);
  for (const auto& one : {inner, key, later, in_array}) expect_refused(call(one.get(), L"Add", L"o", thing_));
}

TEST_F(SharedDictionary, RefusesAWholeDictionaryForTheObjectDeepInIt) {
  const auto outer = new_dictionary();
  const auto inner = new_dictionary();
  EXPECT_EQ(S_OK, call(outer.get(), L"Add", L"inner", inner).hr);
  EXPECT_EQ(S_OK, call(inner.get(), L"Add", thing_, 1).hr);
  ASSERT_TRUE(share());
  expect_refused(call(object_, L"Add", L"outer", outer));
  EXPECT_EQ(0, count());
}

TEST_F(SharedDictionary, MayHoldItself) {
  EXPECT_EQ(S_OK, call(object_, L"Add", L"me", dictionary_).hr);
  ASSERT_TRUE(share());
  expect_refused(call(object_, L"Add", L"o", thing_));
  EXPECT_EQ(S_OK, call(object_, L"RemoveAll").hr);
}

class DictionaryCycles : public testing::Test {
 protected:
  void SetUp() override { korlib_host::free_cycles(); }
  std::int64_t left() const { return korlib_host::live_objects() - before_; }

 private:
  const std::int64_t before_ = korlib_host::live_objects();
};

TEST_F(DictionaryCycles, FreeADictionaryThatHoldsItself) {
  {
    const auto dictionary = new_dictionary();
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"me", dictionary).hr);
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", dictionary, array_of(object_value(dictionary.get()))).hr);
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"thing", korlib::make<Thing>()).hr);
  }
  EXPECT_EQ(2, left());
  korlib_host::free_cycles();
  EXPECT_EQ(0, left());
}

TEST_F(DictionaryCycles, FreeOneThatHoldsItselfThroughOthers) {
  {
    const auto first = new_dictionary();
    const auto second = new_dictionary();
    const auto third = new_dictionary();
    EXPECT_EQ(S_OK, call(first.get(), L"Add", L"next", second).hr);
    EXPECT_EQ(S_OK, call(second.get(), L"Add", L"next", third).hr);
    EXPECT_EQ(S_OK, call(third.get(), L"Add", L"next", first).hr);
    EXPECT_EQ(S_OK, call(third.get(), L"Add", L"leaf", new_dictionary()).hr);
  }
  EXPECT_EQ(4, left());
  korlib_host::free_cycles();
  EXPECT_EQ(0, left());
}

TEST_F(DictionaryCycles, LeaveWhatSomebodyHoldsAndAllThatItHolds) {
  const auto held = new_dictionary();
  {
    const auto other = new_dictionary();
    EXPECT_EQ(S_OK, call(held.get(), L"Add", L"other", other).hr);
    EXPECT_EQ(S_OK, call(other.get(), L"Add", L"back", held).hr);
    EXPECT_EQ(S_OK, call(other.get(), L"Add", L"leaf", new_dictionary()).hr);
  }
  korlib_host::free_cycles();
  EXPECT_EQ(3, left());
  const auto other = test::object_of(test::get(held.get(), L"Item", L"other"));
  EXPECT_EQ(2, test::get(other.get(), L"Count").value.lVal);
  EXPECT_EQ(S_OK, call(other.get(), L"Remove", L"back").hr);
}

TEST_F(DictionaryCycles, AreFoundInWhatAStoreLetsGo) {
  CComVariant stored;
  {
    const auto dictionary = new_dictionary();
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"me", dictionary).hr);
    stored = object_value(dictionary.get());
  }
  korlib_host::free_cycles();
  EXPECT_EQ(1, left());
  korlib_host::watch_for_cycles(stored);
  stored = CComVariant();
  korlib_host::free_cycles();
  EXPECT_EQ(0, left());
}

// Another thread may be using it, so that only whoever stops all of them may look.
TEST_F(DictionaryCycles, LeaveSharedDictionariesToTheEndOfAllThreads) {
  {
    const auto dictionary = new_dictionary();
    EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"me", dictionary).hr);
    const CComVariant value = object_value(dictionary.get());
    ASSERT_TRUE(korlib_host::share(value));
    korlib_host::free_cycles();
    korlib_host::watch_for_cycles(value);
  }
  EXPECT_EQ(1, left());
  korlib_host::free_cycles(korlib_host::CycleReach::all);
  EXPECT_EQ(0, left());
}

TEST_F(DictionaryCycles, MayGoOnAnotherThreadBeforeTheyAreLookedAt) {
  auto dictionary = new_dictionary();
  EXPECT_EQ(S_OK, call(dictionary.get(), L"Add", L"me", dictionary).hr);
  EXPECT_EQ(S_OK, call(dictionary.get(), L"Remove", L"me").hr);
  std::thread other([&] { dictionary.reset(); });
  other.join();
  EXPECT_EQ(0, left());
  korlib_host::free_cycles();
  EXPECT_EQ(0, left());
}

}  // namespace
