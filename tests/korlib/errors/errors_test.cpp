#include <korlib_host/errors.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include <korlib/combstr.h>
#include <korlib/ptr.h>

namespace {

using korlib::guarded;

struct Words {
  std::wstring source;
  std::wstring description;
};

// Takes the thread's error object away.
Words take_words() {
  CComPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.put()) != S_OK) return {};
  CComBSTR source;
  CComBSTR description;
  info->GetSource(source.put());
  info->GetDescription(description.put());
  return {std::wstring(source.view()), std::wstring(description.view())};
}

TEST(Errors, RaisingMakesTheWordsTheThreadsError) {
  EXPECT_EQ(E_INVALIDARG, korlib::raise(E_INVALIDARG, L"Here", L"It is wrong."));
  const Words words = take_words();
  EXPECT_EQ(L"Here", words.source);
  EXPECT_EQ(L"It is wrong.", words.description);
}

TEST(Errors, TheGuardLeavesACodeAsItIs) {
  EXPECT_EQ(S_FALSE, guarded(L"Here", [] { return S_FALSE; }));
  EXPECT_EQ(E_ACCESSDENIED, guarded(L"Here", [] { return E_ACCESSDENIED; }));
  EXPECT_EQ(L"", take_words().description);
}

TEST(Errors, TheGuardTurnsExceptionsIntoCodes) {
  EXPECT_EQ(E_OUTOFMEMORY, guarded(L"Here", []() -> HRESULT { throw std::bad_alloc(); }));
  EXPECT_EQ(E_OUTOFMEMORY, guarded(L"Here", []() -> HRESULT { throw std::length_error("long"); }));
  EXPECT_EQ(E_UNEXPECTED, guarded(L"Here", []() -> HRESULT { throw 1; }));
  EXPECT_EQ(L"", take_words().description);
  EXPECT_EQ(E_FAIL, guarded(L"Here", []() -> HRESULT { throw std::runtime_error("broken"); }));
  const Words words = take_words();
  EXPECT_EQ(L"Here", words.source);
  EXPECT_EQ(L"broken", words.description);
}

TEST(Errors, TheGuardEmptiesTheOutArgumentFirst) {
  LONG number = 7;
  EXPECT_EQ(E_FAIL, guarded(L"", &number, [] { return E_FAIL; }));
  EXPECT_EQ(0, number);
  void* object = &object;
  EXPECT_EQ(E_FAIL, guarded(L"", &object, [] { return E_FAIL; }));
  EXPECT_EQ(nullptr, object);
  VARIANT value;
  value.vt = VT_BSTR;  // and what stands beside it is not a string: it must not be released
  value.llVal = 0x5A5A5A5A;
  EXPECT_EQ(E_FAIL, guarded(L"", &value, [] { return E_FAIL; }));
  EXPECT_EQ(VT_EMPTY, value.vt);
  EXPECT_EQ(S_OK, guarded(L"", &number, [&] {
              number = 9;
              return S_OK;
            }));
  EXPECT_EQ(9, number);
}

TEST(Errors, TheGuardRefusesAMissingOutArgument) {
  bool has_run = false;
  EXPECT_EQ(E_POINTER, guarded(L"", static_cast<LONG*>(nullptr), [&] {
              has_run = true;
              return S_OK;
            }));
  EXPECT_FALSE(has_run);
}

}  // namespace
