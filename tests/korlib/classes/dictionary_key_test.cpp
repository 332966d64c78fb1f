// What makes two keys of a dictionary the same.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "korlib/classes/dictionary_fixture.h"
#include "support/fake.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;
using test::value_of;

class DictionaryKey : public test::DictionaryFixture {};

CComVariant typed(VARTYPE vt, LONGLONG number) {
  CComVariant value;
  value.vt = VT_I8;
  value.llVal = number;
  EXPECT_EQ(S_OK, value.change_type(vt));
  return value;
}

TEST_F(DictionaryKey, FindsNumbersByValueWhateverTheirType) {
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

// A few are looked through one after the other.
TEST_F(DictionaryKey, FindsEachOfFewAndOfMany) {
  for (const LONG mode : {0, 1}) {
    call(object_, L"RemoveAll");
    put(object_, L"CompareMode", static_cast<int>(mode));
    for (int last = 1; last <= 20; ++last) {
      put(object_, L"Item", L"Key " + std::to_wstring(last), last);
      put(object_, L"Item", 100 + last, -last);
      for (int i = 1; i <= last; ++i) {
        EXPECT_EQ(i, get(object_, L"Item", L"Key " + std::to_wstring(i)).value.lVal) << last;
        EXPECT_EQ(-i, get(object_, L"Item", 100 + i).value.lVal) << last;
        EXPECT_EQ(mode == 1, has(L"KEY " + std::to_wstring(i))) << last;
      }
      EXPECT_FALSE(has(L"Key " + std::to_wstring(last + 1)));
      EXPECT_FALSE(has(100));
      EXPECT_EQ(2 * last, count());
    }
    put(object_, L"Key", L"Key 20", L"Key 0");
    for (int i = 1; i < 20; ++i) EXPECT_EQ(S_OK, call(object_, L"Remove", L"Key " + std::to_wstring(i)).hr);
    for (int i = 1; i < 20; ++i) EXPECT_EQ(S_OK, call(object_, L"Remove", 100 + i).hr);
    EXPECT_EQ(20, get(object_, L"Item", L"Key 0").value.lVal);
    put(object_, L"Key", L"Key 0", L"Key 1");  // found by its hash again, when there are many
    for (int i = 0; i < 20; ++i) put(object_, L"Item", i, i);
    EXPECT_EQ(20, get(object_, L"Item", L"Key 1").value.lVal);
  }
}

TEST_F(DictionaryKey, FindsLargeNumbersAndThoseThatAreNone) {
  put(object_, L"Item", typed(VT_I8, 10'000'000'000'000'000), L"ten to the sixteenth");
  EXPECT_TRUE(has(1e16));
  EXPECT_FALSE(has(1e16 + 2));
  put(object_, L"Item", std::numeric_limits<double>::quiet_NaN(), L"no number");
  EXPECT_TRUE(has(-std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(2, count());
}

TEST_F(DictionaryKey, TellsEmptyNullAndZeroApart) {
  put(object_, L"Item", CComVariant(), L"empty");
  put(object_, L"Item", test::null_value(), L"null");
  put(object_, L"Item", 0, L"zero");
  put(object_, L"Item", L"", L"text");
  EXPECT_EQ(4, count());
  EXPECT_EQ(L"empty", text_of(get(object_, L"Item", CComVariant())));
  EXPECT_EQ(L"null", text_of(get(object_, L"Item", test::null_value())));
}

TEST_F(DictionaryKey, KnowsObjectsByIdentity) {
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

TEST_F(DictionaryKey, KnowsAnObjectByAnyOfItsSides) {
  TwoSided object;
  put(object_, L"Item", static_cast<IDispatch*>(&object), 1);
  EXPECT_TRUE(has(static_cast<IUnknown*>(static_cast<IClassFactory*>(&object))));
  EXPECT_EQ(1, count());
  EXPECT_EQ(S_OK, dictionary_->RemoveAll());  // the object ends before the dictionary
}

TEST_F(DictionaryKey, QuotesALongKeyInPart) {
  const test::Answer answer = call(object_, L"Remove", std::wstring(101, L'k'));
  EXPECT_EQ(L"The dictionary has no key \"" + std::wstring(100, L'k') + L"\".", answer.description);
}

TEST_F(DictionaryKey, RefusesKeysThatCannotBeCompared) {
  const test::Answer answer = call(object_, L"Exists", std::vector<std::uint8_t>{1, 2});
  EXPECT_EQ(E_INVALIDARG, answer.hr);
  EXPECT_EQ(L"This value cannot be a key of a dictionary.", answer.description);
}

TEST_F(DictionaryKey, TakesAnOmittedKeyOrValueForTheEmptyOne) {
  const CComVariant omitted(korlib::omitted());
  EXPECT_FALSE(has(omitted));
  put(object_, L"Item", omitted, 1);
  EXPECT_TRUE(has(CComVariant()));
  EXPECT_EQ(S_OK, dictionary_->put_Item(korlib::borrowed(static_cast<BSTR>(nullptr)), omitted));
  CComVariant read;
  EXPECT_EQ(S_OK, dictionary_->get_Item(korlib::borrowed(static_cast<BSTR>(nullptr)), read.put()));
  EXPECT_EQ(VT_EMPTY, read.vt);
}

TEST_F(DictionaryKey, TakesTextWithEmbeddedNul) {
  const std::wstring key(L"a\0b", 3);
  put(object_, L"Item", key, 1);
  EXPECT_TRUE(has(key));
  EXPECT_FALSE(has(L"a"));
}

}  // namespace
