#include <korlib/errorinfo.h>

#include <gtest/gtest.h>

#include <thread>

#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib_host/diagnostics.h>

namespace {

CComPtr<IErrorInfo> error_with(const wchar_t* description) {
  CComPtr<ICreateErrorInfo> info;
  EXPECT_EQ(CreateErrorInfo(info.put()), S_OK);
  EXPECT_EQ(info->SetDescription(const_cast<wchar_t*>(description)), S_OK);
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(info.query(error.put()), S_OK);
  return error;
}

std::wstring description_of(const CComPtr<IErrorInfo>& error) {
  CComBSTR text;
  EXPECT_EQ(error->GetDescription(text.put()), S_OK);
  return std::wstring(text.view());
}

TEST(ErrorInfo, GivesBackWhatWasSet) {
  constexpr GUID kId = korlib::guid("0C733A30-2A1C-11CE-ADE5-00AA0044773D");
  wchar_t source[] = L"Mirt";
  wchar_t description[] = L"Unknown Command 'x'.";
  wchar_t help[] = L"help.txt";
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(CreateErrorInfo(info.put()), S_OK);
  EXPECT_EQ(info->SetGUID(kId), S_OK);
  EXPECT_EQ(info->SetSource(source), S_OK);
  EXPECT_EQ(info->SetDescription(description), S_OK);
  EXPECT_EQ(info->SetHelpFile(help), S_OK);
  EXPECT_EQ(info->SetHelpContext(7), S_OK);

  CComPtr<IErrorInfo> error;
  ASSERT_EQ(info.query(error.put()), S_OK);
  GUID id;
  EXPECT_EQ(error->GetGUID(&id), S_OK);
  EXPECT_EQ(id, kId);
  CComBSTR text;
  EXPECT_EQ(error->GetSource(text.put()), S_OK);
  EXPECT_EQ(text.view(), L"Mirt");
  EXPECT_EQ(error->GetHelpFile(text.put()), S_OK);
  EXPECT_EQ(text.view(), L"help.txt");
  EXPECT_EQ(description_of(error), L"Unknown Command 'x'.");
  DWORD context = 0;
  EXPECT_EQ(error->GetHelpContext(&context), S_OK);
  EXPECT_EQ(context, 7u);
}

TEST(ErrorInfo, StartsOutEmpty) {
  CComPtr<IErrorInfo> error = error_with(nullptr);
  BSTR text = SysAllocString(L"poison");
  SysFreeString(text);
  EXPECT_EQ(error->GetDescription(&text), S_OK);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(error->GetSource(&text), S_OK);
  EXPECT_EQ(text, nullptr);
  GUID id{1, 2, 3, {}};
  EXPECT_EQ(error->GetGUID(&id), S_OK);
  EXPECT_EQ(id, GUID_NULL);
}

TEST(ErrorInfo, IsOneObjectBehindItsInterfaces) {
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(CreateErrorInfo(info.put()), S_OK);
  CComPtr<IErrorInfo> error;
  ASSERT_EQ(info.query(error.put()), S_OK);
  CComPtr<IUnknown> one;
  CComPtr<IUnknown> other;
  ASSERT_EQ(info.query(one.put()), S_OK);
  ASSERT_EQ(error.query(other.put()), S_OK);
  EXPECT_EQ(one, other);
  void* none = &none;
  EXPECT_EQ(error->QueryInterface(IID_IDispatch, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
}

TEST(ErrorInfo, IsMovedOutOfItsThread) {
  SetErrorInfo(0, error_with(L"once").get());
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(GetErrorInfo(0, error.put()), S_OK);
  ASSERT_TRUE(error);
  EXPECT_EQ(description_of(error), L"once");
  EXPECT_EQ(GetErrorInfo(0, error.put()), S_FALSE);
  EXPECT_FALSE(error);
}

TEST(ErrorInfo, IsReplacedByTheNextAndClearedByNull) {
  const auto before = korlib_host::live_objects();
  SetErrorInfo(0, error_with(L"first").get());
  SetErrorInfo(0, error_with(L"second").get());
  EXPECT_EQ(korlib_host::live_objects(), before + 1);
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(korlib_host::live_objects(), before);
  CComPtr<IErrorInfo> error;
  EXPECT_EQ(GetErrorInfo(0, error.put()), S_FALSE);
}

TEST(ErrorInfo, BelongsToOneThreadAndGoesWithIt) {
  const auto before = korlib_host::live_objects();
  SetErrorInfo(0, error_with(L"mine").get());
  std::thread([] {
    CComPtr<IErrorInfo> error;
    EXPECT_EQ(GetErrorInfo(0, error.put()), S_FALSE);
    SetErrorInfo(0, error_with(L"theirs").get());
  }).join();
  EXPECT_EQ(korlib_host::live_objects(), before + 1);
  CComPtr<IErrorInfo> error;
  ASSERT_EQ(GetErrorInfo(0, error.put()), S_OK);
  EXPECT_EQ(description_of(error), L"mine");
}

TEST(ErrorInfo, AnswersNullPointersWithACode) {
  EXPECT_EQ(CreateErrorInfo(nullptr), E_POINTER);
  EXPECT_EQ(GetErrorInfo(0, nullptr), E_POINTER);
  CComPtr<IErrorInfo> error = error_with(L"x");
  EXPECT_EQ(error->GetDescription(nullptr), E_POINTER);
  EXPECT_EQ(error->GetGUID(nullptr), E_POINTER);
  EXPECT_EQ(error->GetHelpContext(nullptr), E_POINTER);
}

TEST(ErrorInfo, ReportsThatMemoryIsShort) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  CComPtr<IErrorInfo> error = error_with(L"kept");
  CComPtr<ICreateErrorInfo> info;
  ASSERT_EQ(error.query(info.put()), S_OK);
  wchar_t other[] = L"other";
  {
    const korlib_host::StringFailure failure(1);
    EXPECT_EQ(info->SetDescription(other), E_OUTOFMEMORY);
  }
  EXPECT_EQ(description_of(error), L"kept");
  const korlib_host::StringFailure failure(1);
  BSTR text = nullptr;
  EXPECT_EQ(error->GetDescription(&text), E_OUTOFMEMORY);
  EXPECT_EQ(text, nullptr);
}

}  // namespace
