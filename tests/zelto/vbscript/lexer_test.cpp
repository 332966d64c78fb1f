#include "vbscript/lexer.h"

#include <gtest/gtest.h>

#include "vbscript/date_literal.h"

namespace zelto::vbscript {
namespace {

struct Number {
  const wchar_t* text;
  double value;
  NumberKind kind;
};

TEST(Lexer, ReadsNumbersWithTheSubtypeThatTheirTextHas) {
  constexpr Number kNumbers[] = {
      {L"0", 0, NumberKind::integer},
      {L"32767", 32767, NumberKind::integer},
      {L"32768", 32768, NumberKind::long_},
      {L"2147483647", 2147483647, NumberKind::long_},
      {L"2147483648", 2147483648, NumberKind::double_},
      {L"1.5", 1.5, NumberKind::double_},
      {L".5", 0.5, NumberKind::double_},
      {L"1.", 1, NumberKind::double_},
      {L"1E3", 1000, NumberKind::double_},
      {L"1.5e-2", 0.015, NumberKind::double_},
      {L"&HFF", 255, NumberKind::integer},
      {L"&hffff", -1, NumberKind::integer},
      {L"&HFFFF&", 65535, NumberKind::long_},
      {L"&H10000", 65536, NumberKind::long_},
      {L"&HFFFFFFFF", -1, NumberKind::long_},
      {L"&O17", 15, NumberKind::integer},
      {L"&17", 15, NumberKind::integer},
  };
  for (const Number& row : kNumbers) {
    const auto tokens = tokenize(row.text);
    ASSERT_EQ(3u, tokens.size()) << row.value;
    EXPECT_EQ(Token::number, tokens[0].kind) << row.value;
    EXPECT_EQ(row.value, tokens[0].value);
    EXPECT_EQ(row.kind, tokens[0].number_kind) << row.value;
  }
}

std::wstring symbols_of(std::wstring_view text) {
  std::wstring symbols;
  for (const Token& token : tokenize(text)) {
    if (token.kind == Token::symbol) symbols += token.text;
    if (token.kind == Token::number) symbols += L'#';
    if (token.kind == Token::line_end) symbols += L';';
  }
  return symbols;
}

TEST(Lexer, TellsAnAmpersandThatJoinsFromTheOneOfANumber) {
  EXPECT_EQ(L"=&;", symbols_of(L"x = a &hello"));
  EXPECT_EQ(L"=#;", symbols_of(L"x = &hF"));
  EXPECT_EQ(L"=&#;", symbols_of(L"x = \"a\"&1"));
  EXPECT_EQ(L"#;", symbols_of(L"f &HFF"));
  EXPECT_EQ(L"=()&;", symbols_of(L"x = f()&hFeed"));
}

TEST(Lexer, JoinsLinesThatAnUnderscoreEnds) {
  EXPECT_EQ(L"=+;", symbols_of(L"x = a _\n + b"));
  EXPECT_EQ(L"=+;", symbols_of(L"x = a _  \r\n + b"));
  EXPECT_EQ(2, tokenize(L"x = _\n5")[2].line);
}

TEST(Lexer, PassesCommentsOver) {
  EXPECT_EQ(L"=;=;", symbols_of(L"x = a ' _\ny = b"));
  EXPECT_EQ(L"=:;", symbols_of(L"x = a : Rem = 5"));
  EXPECT_EQ(L".=;", symbols_of(L"x.Rem = a"));
}

TEST(Lexer, PutsThePiecesOfAPageBetweenLines) {
  const PageMark marks[] = {{2, PageMark::html, 7, false}, {4, PageMark::out}, {6, PageMark::out_end}};
  const auto tokens = tokenize(L"a = 1\n\nb = 2\n\nc\n\nd", marks);
  std::vector<Token::Kind> found;
  for (const Token& token : tokens) {
    if (token.kind == Token::html || token.kind == Token::out || token.kind == Token::out_end) {
      found.push_back(token.kind);
    }
  }
  EXPECT_EQ((std::vector{Token::html, Token::out, Token::out_end}), found);
}

TEST(DateLiterals, AreReadMonthFirst) {
  struct Row {
    const wchar_t* text;
    double date;  // days since 1899-12-30
  };
  constexpr Row kRows[] = {
      {L"12/30/1899", 0},
      {L"1/1/1900", 2},
      {L"12/31/1999", 36525},
      {L"1999-12-31", 36525},
      {L"31 Dec 1999", 36525},
      {L"December 31, 1999", 36525},
      {L"12/31/99", 36525},
      {L"1/1/2000 12:00", 36526.5},
      {L"1/1/2000 6:00 PM", 36526.75},
      {L"12:00 AM", 0},
      {L"18:00:00", 0.75},
      {L"13/1/2000", 36538},
  };
  for (const Row& row : kRows) EXPECT_EQ(row.date, read_date_literal(row.text)) << row.date;
  for (const wchar_t* text : {L"", L"1", L"2/30/2000", L"25:00", L"13:00 PM", L"1/2/3/4", L"abc", L"1:2:3:4"}) {
    EXPECT_FALSE(read_date_literal(text)) << std::string(text, text + std::wstring_view(text).size());
  }
}

}  // namespace
}  // namespace zelto::vbscript
