#include <korlib/dictionary.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>
#include <utility>

#include <korlib_host/diagnostics.h>
#include <korlib_host/dispatch_object.h>

#include "korlib/classes/dictionary_fixture.h"
#include "support/fake.h"

namespace {

using test::call;
using test::get;
using test::new_dictionary;
using test::put;
using test::text_of;
using test::value_of;

// Runs a function when it goes.
class Goer final : public korlib::DispatchObject<Goer> {
 public:
  explicit Goer(std::function<void()> last_words) : last_words_(std::move(last_words)) {}
  ~Goer() override { last_words_(); }
  static std::span<const korlib::Member> members() { return {}; }

 private:
  std::function<void()> last_words_;
};

class Dictionary : public test::DictionaryFixture {};

TEST_F(Dictionary, IsFoundByItsProgId) {
  CLSID clsid{};
  EXPECT_EQ(S_OK, CLSIDFromProgID(L"Scripting.Dictionary", &clsid));
  EXPECT_EQ(CLSID_ScriptingDictionary, clsid);
}

// Each in the end of the one around it would take as much stack as they are deep.
TEST_F(Dictionary, EndsHoweverDeepItHoldsOthers) {
  const auto before = korlib_host::live_objects();
  {
    auto outermost = new_dictionary();
    for (int i = 0; i < 300'000; ++i) {
      const auto inner = std::exchange(outermost, new_dictionary());
      EXPECT_EQ(S_OK, call(outermost.get(), L"Add", L"in", inner.get()).hr);
    }
  }
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST_F(Dictionary, KeepsValuesByKeyInInsertionOrder) {
  EXPECT_EQ(S_OK, call(object_, L"add", L"b", 1).hr);
  EXPECT_EQ(S_OK, call(object_, L"Add", L"a", L"two").hr);
  EXPECT_EQ(S_OK, put(object_, L"item", L"c", 3.5).hr);
  EXPECT_EQ(S_OK, put(object_, L"Item", L"b", 4).hr);
  EXPECT_EQ(L"b,a,c", list(L"Keys"));
  EXPECT_EQ(L"4,two,3.5", list(L"Items"));
  EXPECT_EQ(3, count());
  EXPECT_TRUE(has(L"a"));
  EXPECT_FALSE(has(L"A"));
}

// A text takes the place of another in the string of that one, where it fits.
TEST_F(Dictionary, KeepsATextOfItsOwn) {
  const CComVariant key(L"key");
  const CComVariant next(L"next");
  CComVariant given;
  for (const wchar_t* text : {L"text", L"word", L"", L"a text that takes more room than the one before it", L"text"}) {
    given = CComVariant(text);
    EXPECT_EQ(S_OK, dictionary_->put_Item(key, given));
    const test::Answer read = get(object_, L"Item", L"key");
    EXPECT_EQ(text, text_of(read));
    EXPECT_EQ(S_OK, dictionary_->put_Item(key, next));
    EXPECT_EQ(text, text_of(read));
  }
  EXPECT_EQ(S_OK, dictionary_->put_Item(key, given));
  given.bstrVal[0] = L'n';
  EXPECT_EQ(L"text", text_of(get(object_, L"Item", L"key")));
}

TEST_F(Dictionary, KeepsANullText) {
  const CComVariant key(L"key");
  for (const wchar_t* before : {L"text", L""}) {
    put(object_, L"Item", L"key", before);
    EXPECT_EQ(S_OK, dictionary_->put_Item(key, korlib::borrowed(BSTR{})));
    const test::Answer read = get(object_, L"Item", L"key");
    EXPECT_EQ(VT_BSTR, read.value.vt);
    EXPECT_EQ(nullptr, read.value.bstrVal);
  }
  put(object_, L"Item", L"key", L"text");
  EXPECT_EQ(L"text", text_of(get(object_, L"Item", L"key")));
}

TEST_F(Dictionary, KeepsAllBytesOfAText) {
  CComBSTR bytes;
  bytes.attach(SysAllocStringByteLen("\1\2\3\4\5", 5));
  const CComVariant key(L"key");
  put(object_, L"Item", L"key", L"x");
  EXPECT_EQ(S_OK, dictionary_->put_Item(key, korlib::borrowed(bytes.get())));
  const test::Answer read = get(object_, L"Item", L"key");
  ASSERT_EQ(VT_BSTR, read.value.vt);
  ASSERT_EQ(5U, SysStringByteLen(read.value.bstrVal));
  EXPECT_EQ(0, std::memcmp(bytes.get(), read.value.bstrVal, 5));
  EXPECT_EQ(0, read.value.bstrVal[2]);  // the NUL behind it
}

TEST_F(Dictionary, HasItemAsItsDefaultMember) {
  EXPECT_EQ(S_OK, test::invoke(object_, DISPID_VALUE, DISPATCH_PROPERTYPUT, {value_of(L"k"), value_of(L"v")}).hr);
  EXPECT_EQ(L"v", text_of(test::invoke(object_, DISPID_VALUE, DISPATCH_PROPERTYGET, {value_of(L"k")})));
}

TEST_F(Dictionary, CreatesAMissingKeyEmptyWhenItIsRead) {
  EXPECT_EQ(VT_EMPTY, get(object_, L"Item", L"new").value.vt);
  EXPECT_EQ(1, count());
  EXPECT_TRUE(has(L"new"));
}

TEST_F(Dictionary, RefusesToAddAKeyTwice) {
  EXPECT_EQ(S_OK, call(object_, L"Add", L"k", 1).hr);
  const test::Answer answer = call(object_, L"Add", L"k", 2);
  EXPECT_EQ(0x800A01C9u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Scripting.Dictionary", answer.source);
  EXPECT_EQ(L"The dictionary already has the key \"k\".", answer.description);
  EXPECT_EQ(L"1", list(L"Items"));
}

TEST_F(Dictionary, RemovesKeys) {
  for (int i = 0; i < 5; ++i) put(object_, L"Item", i, i);
  EXPECT_EQ(S_OK, call(object_, L"Remove", 2).hr);
  EXPECT_EQ(L"0,1,3,4", list(L"Keys"));
  const test::Answer answer = call(object_, L"Remove", 2);
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(L"The dictionary has no key \"2\".", answer.description);
  EXPECT_EQ(S_OK, call(object_, L"RemoveAll").hr);
  EXPECT_EQ(0, count());
  EXPECT_EQ(L"", list(L"Keys"));
}

TEST_F(Dictionary, RenamesAKeyInItsPlace) {
  for (const wchar_t* key : {L"a", L"b", L"c"}) put(object_, L"Item", key, key);
  EXPECT_EQ(S_OK, put(object_, L"Key", L"b", L"z").hr);
  EXPECT_EQ(L"a,z,c", list(L"Keys"));
  EXPECT_EQ(L"a,b,c", list(L"Items"));
  EXPECT_EQ(S_OK, put(object_, L"Key", L"z", L"z").hr);
  EXPECT_TRUE(FAILED(put(object_, L"Key", L"b", L"y").hr));
  EXPECT_TRUE(FAILED(put(object_, L"Key", L"z", L"a").hr));
  EXPECT_EQ(L"a,z,c", list(L"Keys"));
}

TEST_F(Dictionary, ComparesTextInAnyLetterCaseWhenToldSo) {
  EXPECT_EQ(0, get(object_, L"CompareMode").value.lVal);
  EXPECT_EQ(S_OK, put(object_, L"CompareMode", 1).hr);
  put(object_, L"Item", L"Stra\u00DFe \u00C4", 1);
  EXPECT_TRUE(has(L"stra\u00DFe \u00E4"));
  EXPECT_EQ(S_OK, put(object_, L"Item", L"STRA\u00DFE \u00E4", 2).hr);
  EXPECT_EQ(L"Stra\u00DFe \u00C4", list(L"Keys"));
  const test::Answer answer = put(object_, L"CompareMode", 0);
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(L"CompareMode can be set only while the dictionary is empty.", answer.description);
  call(object_, L"RemoveAll");
  EXPECT_EQ(S_OK, put(object_, L"CompareMode", 0).hr);
  EXPECT_TRUE(FAILED(put(object_, L"CompareMode", 2).hr));
}

TEST_F(Dictionary, KeepsTheTypeOfValues) {
  CComPtr<test::FakeScript> script = test::FakeScript::make();
  EXPECT_EQ(S_OK, test::putref(object_, L"Item", L"o", script).hr);
  EXPECT_EQ(VT_DISPATCH, get(object_, L"Item", L"o").value.vt);
  VARIANT key = korlib::borrowed(static_cast<BSTR>(nullptr));
  CComVariant unknown(static_cast<IUnknown*>(script.get()));
  EXPECT_EQ(S_OK, dictionary_->put_Item(key, unknown));
  CComVariant read;
  EXPECT_EQ(S_OK, dictionary_->get_Item(key, read.put()));
  EXPECT_EQ(VT_UNKNOWN, read.vt);
}

TEST_F(Dictionary, StoresWhatAReferenceRefersTo) {
  CComVariant variable(L"value");
  const CComVariant reference = test::by_reference(&variable);
  EXPECT_EQ(S_OK, dictionary_->put_Item(korlib::long_variant(1), reference));
  variable = CComVariant(L"changed");
  EXPECT_EQ(L"value", text_of(get(object_, L"Item", 1)));
}

TEST_F(Dictionary, EnumeratesItsKeys) {
  for (const wchar_t* key : {L"x", L"y"}) put(object_, L"Item", key, 0);
  CComPtr<IUnknown> unknown;
  ASSERT_EQ(S_OK, dictionary_->get__NewEnum(unknown.put()));
  CComPtr<IEnumVARIANT> keys;
  ASSERT_EQ(S_OK, unknown.query(keys.put()));
  CComVariant key;
  EXPECT_EQ(S_OK, keys->Next(1, key.put(), nullptr));
  EXPECT_EQ(L"x", korlib::view_of(key.bstrVal));
  call(object_, L"RemoveAll");
  EXPECT_EQ(S_OK, keys->Next(1, key.put(), nullptr));
  EXPECT_EQ(S_FALSE, keys->Next(1, key.put(), nullptr));
}

TEST_F(Dictionary, StaysRightThroughManyChanges) {
  // Against a plain list: adding, removing and renaming in a fixed pseudo-random order.
  std::vector<int> expected;
  std::uint32_t state = 12345;
  const auto next = [&state](std::uint32_t below) { return (state = state * 1664525 + 1013904223) / 7 % below; };
  for (int step = 0; step < 5000; ++step) {
    const int key = static_cast<int>(next(200));
    const auto at = std::find(expected.begin(), expected.end(), key);
    ASSERT_EQ(at != expected.end(), has(key)) << step;
    if (at == expected.end()) {
      ASSERT_EQ(S_OK, call(object_, L"Add", key, step).hr);
      expected.push_back(key);
    } else if (next(3) == 0) {
      ASSERT_EQ(S_OK, put(object_, L"Key", key, key + 1000).hr);
      ASSERT_EQ(S_OK, put(object_, L"Key", key + 1000, key).hr);
    } else {
      ASSERT_EQ(S_OK, call(object_, L"Remove", key).hr);
      expected.erase(at);
    }
  }
  std::wstring joined;
  for (const int key : expected) joined += (joined.empty() ? L"" : L",") + std::to_wstring(key);
  EXPECT_EQ(joined, list(L"Keys"));
}

// Each renaming leaves a gap where the old name was.
TEST_F(Dictionary, RenamesAKeyAsOftenAsIsWanted) {
  put(object_, L"Item", 0, L"value");
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(S_OK, put(object_, L"Key", i, i + 1).hr) << i;
  EXPECT_TRUE(has(1000));
  EXPECT_EQ(L"1000", list(L"Keys"));
}

TEST_F(Dictionary, LetsAnObjectComeBackWhileItIsReleased) {
  // A release under the dictionary's lock would deadlock here.
  const auto add_goer = [&](const wchar_t* key) {
    CComPtr<Goer> goer = korlib::make<Goer>([this] { put(object_, L"Item", L"last words", L"said"); });
    put(object_, L"Item", key, goer);
  };
  add_goer(L"replaced");
  put(object_, L"Item", L"replaced", 1);
  EXPECT_TRUE(has(L"last words"));
  call(object_, L"Remove", L"last words");
  add_goer(L"removed");
  call(object_, L"Remove", L"removed");
  EXPECT_TRUE(has(L"last words"));
  add_goer(L"cleared");
  call(object_, L"RemoveAll");
  EXPECT_TRUE(has(L"last words"));
}

TEST_F(Dictionary, ServesSeveralThreads) {
  std::vector<std::thread> threads;
  for (int worker = 0; worker < 4; ++worker) {
    threads.emplace_back([this, worker] {
      for (int i = 0; i < 500; ++i) {
        put(object_, L"Item", i, worker);
        put(object_, L"Item", 1000 * (worker + 1) + i, std::wstring(L"text"));
        get(object_, L"Item", i);
        if (i % 50 == 0) call(object_, L"Keys");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(500 * 5, count());
}

TEST_F(Dictionary, LeavesNothingBehind) {
  const auto before = korlib_host::live_objects();
  CComPtr<IKorLibDictionary> other = new_dictionary();
  put(other.get(), L"Item", L"inner", new_dictionary());
  other.reset();
  EXPECT_EQ(before, korlib_host::live_objects());
}

}  // namespace
