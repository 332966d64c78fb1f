#include <korlib/errorinfo.h>

#include <gtest/gtest.h>

#include <thread>

#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib_host/diagnostics.h>

namespace {

CComPtr<IErrorInfo> error_with(const wchar_t* description) {
  CComPtr<ICreateErrorInfo> info;
  EXPECT_EQ(S_OK, CreateErrorInfo(info.put()));
  EXPECT_EQ(S_OK, info->SetDescription(const_cast<wchar_t*>(description)));
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(S_OK, info.query(error.put()));
  return error;
}

std::wstring description_of(const CComPtr<IErrorInfo>& error) {
  CComBSTR text;
  EXPECT_EQ(S_OK, error->GetDescription(text.put()));
  return std::wstring(text.view());
}

TEST(ErrorInfo, GivesBackWhatWasSet) {
  constexpr GUID kId = korlib::guid("0C733A30-2A1C-11CE-ADE5-00AA0044773D");
  wchar_t source[] = L"Mirt";
  wchar_t description[] = L"Unknown Command 'x'.";
  wchar_t help[] = L"help.txt";
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(S_OK, CreateErrorInfo(info.put()));
  EXPECT_EQ(S_OK, info->SetGUID(kId));
  EXPECT_EQ(S_OK, info->SetSource(source));
  EXPECT_EQ(S_OK, info->SetDescription(description));
  EXPECT_EQ(S_OK, info->SetHelpFile(help));
  EXPECT_EQ(S_OK, info->SetHelpContext(7));

  CComPtr<IErrorInfo> error;
  ASSERT_EQ(S_OK, info.query(error.put()));
  GUID id;
  EXPECT_EQ(S_OK, error->GetGUID(&id));
  EXPECT_EQ(kId, id);
  CComBSTR text;
  EXPECT_EQ(S_OK, error->GetSource(text.put()));
  EXPECT_EQ(L"Mirt", text.view());
  EXPECT_EQ(S_OK, error->GetHelpFile(text.put()));
  EXPECT_EQ(L"help.txt", text.view());
  EXPECT_EQ(L"Unknown Command 'x'.", description_of(error));
  DWORD context = 0;
  EXPECT_EQ(S_OK, error->GetHelpContext(&context));
  EXPECT_EQ(7u, context);
}

TEST(ErrorInfo, StartsOutEmpty) {
  CComPtr<IErrorInfo> error = error_with(nullptr);
  BSTR text = SysAllocString(L"poison");
  SysFreeString(text);
  EXPECT_EQ(S_OK, error->GetDescription(&text));
  EXPECT_EQ(nullptr, text);
  EXPECT_EQ(S_OK, error->GetSource(&text));
  EXPECT_EQ(nullptr, text);
  GUID id{1, 2, 3, {}};
  EXPECT_EQ(S_OK, error->GetGUID(&id));
  EXPECT_EQ(GUID_NULL, id);
}

TEST(ErrorInfo, IsOneObjectBehindItsInterfaces) {
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(S_OK, CreateErrorInfo(info.put()));
  CComPtr<IErrorInfo> error;
  ASSERT_EQ(S_OK, info.query(error.put()));
  CComPtr<IUnknown> one;
  CComPtr<IUnknown> other;
  ASSERT_EQ(S_OK, info.query(one.put()));
  ASSERT_EQ(S_OK, error.query(other.put()));
  EXPECT_EQ(one, other);
  void* none = &none;
  EXPECT_EQ(E_NOINTERFACE, error->QueryInterface(IID_IDispatch, &none));
  EXPECT_EQ(nullptr, none);
}

TEST(ErrorInfo, IsMovedOutOfItsThread) {
  SetErrorInfo(0, error_with(L"once").get());
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(S_OK, GetErrorInfo(0, error.put()));
  ASSERT_TRUE(error);
  EXPECT_EQ(L"once", description_of(error));
  EXPECT_EQ(S_FALSE, GetErrorInfo(0, error.put()));
  EXPECT_FALSE(error);
}

TEST(ErrorInfo, IsReplacedByTheNextAndClearedByNull) {
  const auto before = korlib_host::live_objects();
  SetErrorInfo(0, error_with(L"first").get());
  SetErrorInfo(0, error_with(L"second").get());
  EXPECT_EQ(before + 1, korlib_host::live_objects());
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(before, korlib_host::live_objects());
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(S_FALSE, GetErrorInfo(0, error.put()));
}

TEST(ErrorInfo, BelongsToOneThreadAndGoesWithIt) {
  const auto before = korlib_host::live_objects();
  SetErrorInfo(0, error_with(L"mine").get());
  std::thread([] {
    CComPtr<IErrorInfo> error;
    EXPECT_EQ(S_FALSE, GetErrorInfo(0, error.put()));
    SetErrorInfo(0, error_with(L"theirs").get());
  }).join();
  EXPECT_EQ(before + 1, korlib_host::live_objects());
  CComPtr<IErrorInfo> error;
  ASSERT_EQ(S_OK, GetErrorInfo(0, error.put()));
  EXPECT_EQ(L"mine", description_of(error));
}

TEST(ErrorInfo, AnswersNullPointersWithACode) {
  EXPECT_EQ(E_POINTER, CreateErrorInfo(nullptr));
  EXPECT_EQ(E_POINTER, GetErrorInfo(0, nullptr));
  CComPtr<IErrorInfo> error = error_with(L"x");
  EXPECT_EQ(E_POINTER, error->GetDescription(nullptr));
  EXPECT_EQ(E_POINTER, error->GetGUID(nullptr));
  EXPECT_EQ(E_POINTER, error->GetHelpContext(nullptr));
}

TEST(ErrorInfo, ReportsThatMemoryIsShort) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  CComPtr<IErrorInfo> error = error_with(L"kept");
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(S_OK, error.query(info.put()));
  wchar_t other[] = L"other";
  {
    const korlib_host::StringFailure failure(1);
    EXPECT_EQ(E_OUTOFMEMORY, info->SetDescription(other));
  }
  EXPECT_EQ(L"kept", description_of(error));
  const korlib_host::StringFailure failure(1);
  BSTR text = nullptr;
  EXPECT_EQ(E_OUTOFMEMORY, error->GetDescription(&text));
  EXPECT_EQ(nullptr, text);
}

}  // namespace
