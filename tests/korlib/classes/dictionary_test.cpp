#include <korlib/dictionary.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <thread>

#include <korlib/activation.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/dispatch_object.h>

#include "support/fake.h"
#include "support/late_bound.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;
using test::value_of;

CComPtr<IKorLibDictionary> new_dictionary() {
  CComPtr<IKorLibDictionary> dictionary;
  EXPECT_EQ(S_OK, CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER,
                                   korlib::iid_of<IKorLibDictionary>, dictionary.put_void()));
  return dictionary;
}

// Runs a function when it goes.
class Goer final : public korlib::DispatchObject<Goer> {
 public:
  explicit Goer(std::function<void()> last_words) : last_words_(std::move(last_words)) {}
  ~Goer() override { last_words_(); }
  static std::span<const korlib::Member> members() { return {}; }

 private:
  std::function<void()> last_words_;
};

class Dictionary : public testing::Test {
 protected:
  void SetUp() override {
    dictionary_ = new_dictionary();
    object_ = dictionary_.get();
  }
  LONG count() { return get(object_, L"Count").value.lVal; }
  template <class Key>
  bool has(const Key& key) {
    return test::is_true(call(object_, L"Exists", key));
  }
  // The elements of Keys or Items as one text.
  std::wstring list(const wchar_t* member) {
    const test::Answer answer = call(object_, member);
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, answer.value.vt);
    std::wstring joined;
    LONG last = -1;
    EXPECT_EQ(S_OK, SafeArrayGetUBound(answer.value.parray, 1, &last));
    for (LONG i = 0; i <= last; ++i) {
      CComVariant element;
      EXPECT_EQ(S_OK, SafeArrayGetElement(answer.value.parray, &i, element.put()));
      EXPECT_EQ(S_OK, element.change_type(VT_BSTR));
      joined += std::wstring(joined.empty() ? L"" : L",") + std::wstring(korlib::view_of(element.bstrVal));
    }
    return joined;
  }

  CComPtr<IKorLibDictionary> dictionary_;
  IDispatch* object_ = nullptr;
};

TEST_F(Dictionary, IsFoundByItsProgId) {
  CLSID clsid{};
  EXPECT_EQ(S_OK, CLSIDFromProgID(L"Scripting.Dictionary", &clsid));
  EXPECT_EQ(CLSID_ScriptingDictionary, clsid);
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

CComVariant typed(VARTYPE vt, LONGLONG number) {
  CComVariant value;
  value.vt = VT_I8;
  value.llVal = number;
  EXPECT_EQ(S_OK, value.change_type(vt));
  return value;
}

TEST_F(Dictionary, FindsNumbersByValueWhateverTheirType) {
  put(object_, L"Item", 1, L"one");
  for (const VARTYPE vt : {VT_I1, VT_I2, VT_I8, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_INT, VT_UINT, VT_R4, VT_R8, VT_CY}) {
    EXPECT_TRUE(has(typed(static_cast<VARTYPE>(vt), 1))) << vt;
    EXPECT_FALSE(has(typed(static_cast<VARTYPE>(vt), 2))) << vt;
  }
  EXPECT_FALSE(has(L"1"));
  EXPECT_FALSE(has(1.5));
  EXPECT_FALSE(has(true));
  put(object_, L"Item", -1, L"minus");
  EXPECT_TRUE(has(true));  // as VarCmp has it: true is -1
  EXPECT_FALSE(has(false));
  put(object_, L"Item", typed(VT_I8, 9007199254740993), L"large");
  EXPECT_FALSE(has(9007199254740992.0));
}

TEST_F(Dictionary, FindsLargeNumbersAndThoseThatAreNone) {
  put(object_, L"Item", typed(VT_I8, 10'000'000'000'000'000), L"ten to the sixteenth");
  EXPECT_TRUE(has(1e16));
  EXPECT_FALSE(has(1e16 + 2));
  put(object_, L"Item", std::numeric_limits<double>::quiet_NaN(), L"no number");
  EXPECT_TRUE(has(-std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(2, count());
}

TEST_F(Dictionary, TellsEmptyNullAndZeroApart) {
  put(object_, L"Item", CComVariant(), L"empty");
  put(object_, L"Item", test::null_value(), L"null");
  put(object_, L"Item", 0, L"zero");
  put(object_, L"Item", L"", L"text");
  EXPECT_EQ(4, count());
  EXPECT_EQ(L"empty", text_of(get(object_, L"Item", CComVariant())));
  EXPECT_EQ(L"null", text_of(get(object_, L"Item", test::null_value())));
}

TEST_F(Dictionary, KnowsObjectsByIdentity) {
  CComPtr<test::FakeScript> one = test::FakeScript::make();
  CComPtr<test::FakeScript> other = test::FakeScript::make();
  put(object_, L"Item", one, 1);
  EXPECT_TRUE(has(one));
  EXPECT_TRUE(has(value_of(static_cast<IUnknown*>(one.get()))));
  EXPECT_FALSE(has(other));
}

// An object whose late-bound side lies elsewhere in it than the pointer that it is known by.
class TwoSided final : public IClassFactory, public IDispatch {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    *ppv = riid == IID_IDispatch  ? static_cast<void*>(static_cast<IDispatch*>(this))
           : riid == IID_IUnknown ? static_cast<void*>(static_cast<IClassFactory*>(this))
                                  : nullptr;
    return *ppv ? S_OK : E_NOINTERFACE;
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  HRESULT CreateInstance(IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT LockServer(BOOL) override { return E_NOTIMPL; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return E_NOTIMPL; }
};

TEST_F(Dictionary, KnowsAnObjectByAnyOfItsSides) {
  TwoSided object;
  put(object_, L"Item", static_cast<IDispatch*>(&object), 1);
  EXPECT_TRUE(has(static_cast<IUnknown*>(static_cast<IClassFactory*>(&object))));
  EXPECT_EQ(1, count());
}

TEST_F(Dictionary, QuotesALongKeyInPart) {
  const test::Answer answer = call(object_, L"Remove", std::wstring(101, L'k'));
  EXPECT_EQ(L"The dictionary has no key \"" + std::wstring(100, L'k') + L"\".", answer.description);
}

TEST_F(Dictionary, RefusesKeysThatCannotBeCompared) {
  const test::Answer answer = call(object_, L"Exists", std::vector<std::uint8_t>{1, 2});
  EXPECT_EQ(E_INVALIDARG, answer.hr);
  EXPECT_EQ(L"This value cannot be a key of a dictionary.", answer.description);
}

TEST_F(Dictionary, TakesAnOmittedKeyOrValueForTheEmptyOne) {
  const CComVariant omitted(korlib::omitted());
  EXPECT_FALSE(has(omitted));
  put(object_, L"Item", omitted, 1);
  EXPECT_TRUE(has(CComVariant()));
  EXPECT_EQ(S_OK, dictionary_->put_Item(korlib::borrowed(static_cast<BSTR>(nullptr)), omitted));
  CComVariant read;
  EXPECT_EQ(S_OK, dictionary_->get_Item(korlib::borrowed(static_cast<BSTR>(nullptr)), read.put()));
  EXPECT_EQ(VT_EMPTY, read.vt);
}

TEST_F(Dictionary, TakesTextWithEmbeddedNul) {
  const std::wstring key(L"a\0b", 3);
  put(object_, L"Item", key, 1);
  EXPECT_TRUE(has(key));
  EXPECT_FALSE(has(L"a"));
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
