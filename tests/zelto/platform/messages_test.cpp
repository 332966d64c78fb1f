#include <gtest/gtest.h>
#include <korlib/hresult.h>
#include <korlib/winapi.h>

#include <string>

namespace {

std::wstring message(HRESULT hr, DWORD size = 1280) {
  std::wstring buffer(size, L'x');
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      static_cast<DWORD>(hr), 2048, buffer.data(), size, nullptr);
  EXPECT_EQ(L'\0', buffer[length]);
  return buffer.substr(0, length);
}

TEST(Messages, KnowsTheTextsOfCommonCodes) {
  EXPECT_EQ(L"Member not found.", message(DISP_E_MEMBERNOTFOUND));
  EXPECT_EQ(L"Type mismatch.", message(DISP_E_TYPEMISMATCH));
  EXPECT_EQ(L"Unknown name.", message(DISP_E_UNKNOWNNAME));
  EXPECT_EQ(L"Invalid index.", message(DISP_E_BADINDEX));
  EXPECT_EQ(L"The parameter is incorrect.", message(E_INVALIDARG));
}

TEST(Messages, GivesNothingForAnUnknownCode) { EXPECT_EQ(L"", message(korlib::hresult(0x80049999))); }

TEST(Messages, GivesNothingThatDoesNotFit) {
  EXPECT_EQ(L"Type mismatch.", message(DISP_E_TYPEMISMATCH, 15));
  EXPECT_EQ(L"", message(DISP_E_TYPEMISMATCH, 14));
}

TEST(Messages, NeedsTheSystemTableAndABuffer) {
  wchar_t buffer[64] = L"poison";
  const auto code = static_cast<DWORD>(E_FAIL);
  EXPECT_EQ(0u, FormatMessageW(0, nullptr, code, 0, buffer, 64, nullptr));
  EXPECT_STREQ(L"", buffer);
  EXPECT_EQ(0u, FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, nullptr, 64, nullptr));
  EXPECT_EQ(0u, FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, buffer, 0, nullptr));
}

}  // namespace
