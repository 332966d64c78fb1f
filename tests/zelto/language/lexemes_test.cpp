#include "language/lexemes.h"

#include <gtest/gtest.h>

namespace zelto::language {
namespace {

TEST(Lexemes, TellWhatCanStandAsANameInSourceText) {
  for (const wchar_t* name : {L"a", L"A1", L"_", L"$", L"\u00fc", L"let", L"enumerate"}) {
    EXPECT_TRUE(is_plain_name(name)) << std::wstring(name).size();
  }
  for (const wchar_t* text :
       {L"", L"1a", L"a b", L"a;b", L"if", L"this", L"enum", L"$zelto", L"$zelto_call", L"\u2028", L"a\\u0041"}) {
    EXPECT_FALSE(is_plain_name(text)) << std::wstring(text).size();
  }
}

}  // namespace
}  // namespace zelto::language
