// What only a caller of the typed interface sees.
#include <mirt/mirt.h>

#include <cwchar>

#include "support/fake.h"
#include "support/module.h"

namespace test {
namespace {

class TypedUtility : public ModuleTest {
 protected:
  CComPtr<IUtility> utility_ = module_.create<IUtility>(L"Utility");
  void TearDown() override {
    utility_.reset();
    ModuleTest::TearDown();
  }
};

TEST_F(TypedUtility, MakeGUIDIsBareForTheOneTrueValueOnly) {
  for (const VARIANT_BOOL value : {VARIANT_BOOL{0}, VARIANT_BOOL{1}, VARIANT_BOOL{2}, VARIANT_BOOL{-2}}) {
    CComBSTR guid;
    EXPECT_EQ(S_OK, utility_->MakeGUID(value, guid.put()));
    EXPECT_EQ(38u, guid.length()) << value;
  }
  CComBSTR guid;
  EXPECT_EQ(S_OK, utility_->MakeGUID(VARIANT_TRUE, guid.put()));
  EXPECT_EQ(32u, guid.length());
}

TEST_F(TypedUtility, NullStringsAreEmpty) {
  CComBSTR text;
  EXPECT_EQ(S_OK, utility_->HTMLEncode(nullptr, text.put()));
  EXPECT_EQ(0u, text.length());
  EXPECT_EQ(S_OK, utility_->SubmitDecode(nullptr, text.put()));
  EXPECT_EQ(0u, text.length());
  EXPECT_EQ(S_OK, utility_->Trim(nullptr, text.put()));
  EXPECT_EQ(nullptr, text.get());
  EXPECT_EQ(E_INVALIDARG, utility_->MakeKey(1, nullptr, text.put()));
  EXPECT_EQ(E_FAIL, utility_->HanToZen(nullptr, text.put()));
  CComVariant value;
  EXPECT_EQ(S_OK, utility_->URLDecode(nullptr, 0, &value));
  EXPECT_EQ(VT_BSTR, value.vt);
  EXPECT_EQ(E_FAIL, utility_->Base64Decode(nullptr, 0, value.put()));
}

TEST_F(TypedUtility, FailuresLeaveTheResultsDefined) {
  wchar_t nobodys = 0;
  const BSTR poison = &nobodys;  // must not be freed
  CComVariant number(LONG{1});
  const auto expect_null = [&](HRESULT hr, BSTR out) {
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(nullptr, out);
  };
  BSTR out = poison;
  HRESULT hr = utility_->MD5(&number, 0, &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->SHA1(&number, 0, &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->Base64Encode(&number, 0, &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->URLEncode(&number, 0, &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->MakeKey(-1, nullptr, &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->MakeKey(2147483647, CComBSTR(L"a"), &out);
  expect_null(hr, out);
  out = poison;
  hr = utility_->ZenToHan(CComBSTR(L"a"), &out);
  expect_null(hr, out);
  VARIANT value;
  value.vt = VT_BSTR;
  value.bstrVal = poison;
  EXPECT_EQ(E_FAIL, utility_->Base64Decode(CComBSTR(L"?"), 0, &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
  value.vt = VT_BSTR;
  value.bstrVal = poison;
  EXPECT_EQ(E_FAIL, utility_->URLDecode(CComBSTR(L"?"), 0, &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST_F(TypedUtility, FindStringKeepsWhatItFoundBeforeAFailure) {
  CComPtr<FakeScript> textless = FakeScript::make();
  CComVariant list(L"a");
  CComVariant wanted = value_of(std::vector<CComVariant>{value_of(L"a"), value_of(textless)});
  VARIANT_BOOL found = 5;
  EXPECT_TRUE(FAILED(utility_->FindString(&list, &wanted, &found)));
  EXPECT_EQ(VARIANT_TRUE, found);
  CComVariant none = value_of(std::vector<CComVariant>{value_of(textless)});
  EXPECT_TRUE(FAILED(utility_->FindString(&list, &none, &found)));
  EXPECT_EQ(VARIANT_FALSE, found);
}

TEST_F(TypedUtility, FindStringLeavesItsAnswerAloneWithoutArrays) {
  CComVariant list(L"a");
  CComVariant no_array;
  no_array.vt = VT_ARRAY | VT_VARIANT;
  no_array.parray = nullptr;
  VARIANT_BOOL found = 5;
  EXPECT_TRUE(FAILED(utility_->FindString(&no_array, &list, &found)));
  EXPECT_EQ(5, found);
  EXPECT_TRUE(FAILED(utility_->FindString(&list, &no_array, &found)));
  EXPECT_EQ(5, found);
}

TEST_F(TypedUtility, MissingOutParametersAreRefused) {
  CComBSTR a(L"a");
  CComVariant value(L"a");
  EXPECT_EQ(E_POINTER, utility_->MD5(&value, 0, nullptr));
  EXPECT_EQ(E_POINTER, utility_->Trim(a, nullptr));
  EXPECT_EQ(E_POINTER, utility_->HTMLEncode(a, nullptr));
  EXPECT_EQ(E_POINTER, utility_->SubmitDecode(a, nullptr));
  EXPECT_EQ(E_POINTER, utility_->HanToZen(a, nullptr));
  EXPECT_EQ(E_POINTER, utility_->MakeKey(1, a, nullptr));
  EXPECT_EQ(E_POINTER, utility_->MakeGUID(0, nullptr));
  EXPECT_EQ(E_POINTER, utility_->URLDecode(a, 0, nullptr));
  EXPECT_EQ(E_POINTER, utility_->URLEncode(&value, 0, nullptr));
  EXPECT_EQ(E_POINTER, utility_->FindString(&value, &value, nullptr));
}

}  // namespace
}  // namespace test
