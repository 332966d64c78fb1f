#include <gtest/gtest.h>
#include <korlib/hresult.h>
#include <korlib/winapi.h>

#include <string>

namespace {

std::wstring message(HRESULT hr, DWORD size = 1280) {
  std::wstring buffer(size, L'x');
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      static_cast<DWORD>(hr), 2048, buffer.data(), size, nullptr);
  EXPECT_EQ(buffer[length], L'\0');
  return buffer.substr(0, length);
}

TEST(Messages, KnowsTheTextsOfCommonCodes) {
  EXPECT_EQ(message(DISP_E_MEMBERNOTFOUND), L"Member not found.");
  EXPECT_EQ(message(DISP_E_TYPEMISMATCH), L"Type mismatch.");
  EXPECT_EQ(message(DISP_E_UNKNOWNNAME), L"Unknown name.");
  EXPECT_EQ(message(DISP_E_BADINDEX), L"Invalid index.");
  EXPECT_EQ(message(E_INVALIDARG), L"The parameter is incorrect.");
}

TEST(Messages, GivesNothingForAnUnknownCode) { EXPECT_EQ(message(korlib::hresult(0x80049999)), L""); }

TEST(Messages, GivesNothingThatDoesNotFit) {
  EXPECT_EQ(message(DISP_E_TYPEMISMATCH, 15), L"Type mismatch.");
  EXPECT_EQ(message(DISP_E_TYPEMISMATCH, 14), L"");
}

TEST(Messages, NeedsTheSystemTableAndABuffer) {
  wchar_t buffer[64] = L"poison";
  const auto code = static_cast<DWORD>(E_FAIL);
  EXPECT_EQ(FormatMessageW(0, nullptr, code, 0, buffer, 64, nullptr), 0u);
  EXPECT_STREQ(buffer, L"");
  EXPECT_EQ(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, nullptr, 64, nullptr), 0u);
  EXPECT_EQ(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, buffer, 0, nullptr), 0u);
}

}  // namespace
