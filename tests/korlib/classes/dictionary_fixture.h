// A dictionary under test, empty at the start of each case.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include <korlib/activation.h>
#include <korlib/dictionary.h>

#include "support/late_bound.h"

namespace test {

inline CComPtr<IKorLibDictionary> new_dictionary() {
  CComPtr<IKorLibDictionary> dictionary;
  EXPECT_EQ(S_OK, CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER,
                                   korlib::iid_of<IKorLibDictionary>, dictionary.put_void()));
  return dictionary;
}

class DictionaryFixture : public testing::Test {
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

}  // namespace test
