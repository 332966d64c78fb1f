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

TEST(Lexemes, TakeEscapesIntoAName) {
  const struct {
    std::wstring_view text;
    std::size_t length;
  } rows[] = {{L"ab.c", 2},
              {L"#a=", 2},
              {L"a\\u0062;", 7},
              {L"\\u{61}b.c", 7},
              {L"a\\u{62}c\\u{64} ", 14},
              {L"\\u{61", kOpen},
              {L"a\\u{\n\u2028", kOpen},
              {L"a\\", 2}};
  for (const auto& row : rows) EXPECT_EQ(row.length, past_word(row.text, 0)) << row.length;
}

}  // namespace
}  // namespace zelto::language
