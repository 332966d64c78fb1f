// The scanner: which marks and which literal runs a template consists of.
#include "mirt/templator/engine.h"

#include <random>

namespace test {
namespace {

struct Case {
  const char* about;
  std::wstring text;
  std::vector<std::wstring> texts;
  std::vector<Mark> marks;
  const wchar_t* types = kChildTypes;
};

const std::vector<Case>& cases() {
  using W = std::wstring;
  static const std::vector<Case> all = {
      {"nothing", L"", {L""}, {}},
      {"text alone", L"ab", {L"ab"}, {}},
      {"a mark alone", L"(#%x#)", {L"", L""}, {{L'%', L"x", {}}}},
      {"a mark between texts", L"a(#%x#)b", {L"a", L"b"}, {{L'%', L"x", {}}}},
      {"marks side by side", L"(#%x#)(#:y#)", {L"", L"", L""}, {{L'%', L"x", {}}, {L':', L"y", {}}}},
      {"an empty mark", L"(##)", {L"", L""}, {{0, L"", {}}}},
      {"a type and nothing else", L"(#%#)", {L"", L""}, {{L'%', L"", {}}}},
      {"no type", L"(#x#)", {L"", L""}, {{0, L"x", {}}}},
      {"only the first character is a type", L"(#%%x#)", {L"", L""}, {{L'%', L"%x", {}}}},
      {"a character of no type begins the name", L"(#!x#)", {L"", L""}, {{0, L"!x", {}}}},
      {"a vertical bar is a type", L"(#|x#)", {L"", L""}, {{L'|', L"x", {}}}},
      {"a backslash is a type", L"(#\\x#)", {L"", L""}, {{L'\\', L"x", {}}}},
      {"blanks belong to the name", L"(#% x #)", {L"", L""}, {{L'%', L" x ", {}}}},

      {"an escaped opener", L"a^(#b", {L"a(#b"}, {}},
      {"an escaped closer", L"a^#)b", {L"a#)b"}, {}},
      {"an escaped escape", L"a^^b", {L"a^b"}, {}},
      {"two escapes before an opener", L"^^(#%x#)", {L"^", L""}, {{L'%', L"x", {}}}},
      {"an escape before an ordinary character", L"a^xb", {L"a^xb"}, {}},
      {"an escape at the end", L"a^", {L"a^"}, {}},
      {"separators are text outside marks", L"a|b#|#c", {L"a|b#|#c"}, {}},
      {"and cannot be escaped there", L"a^|b^#|#c", {L"a^|b^#|#c"}, {}},
      {"halves of delimiters", L"( # ( ) # )", {L"( # ( ) # )"}, {}},
      {"an opener's half before an opener", L"((#%x#))", {L"(", L")"}, {{L'%', L"x", {}}}},
      {"an opener's half at the end", L"a(", {L"a("}, {}},
      {"a hash at the end", L"a#", {L"a#"}, {}},

      {"one parameter", L"(#%x|a#)", {L"", L""}, {{L'%', L"x", {L"a"}}}},
      {"a further bar is text", L"(#%x|a|b#)", {L"", L""}, {{L'%', L"x", {L"a|b"}}}},
      {"two parameters", L"(#%x|a#|#b#)", {L"", L""}, {{L'%', L"x", {L"a", L"b"}}}},
      {"parameters without a bar", L"(#%x#|#a#|#b#)", {L"", L""}, {{L'%', L"x", {L"a", L"b"}}}},
      {"a bar after a parameter separator", L"(#%x#|#a|b#)", {L"", L""}, {{L'%', L"x", {L"a|b"}}}},
      {"empty parameters", L"(#%x|#|##|##)", {L"", L""}, {{L'%', L"x", {L"", L"", L""}}}},
      {"an empty name with a parameter", L"(#%|a#)", {L"", L""}, {{L'%', L"", {L"a"}}}},
      {"blanks belong to parameters", L"(#%x| a #|# b #)", {L"", L""}, {{L'%', L"x", {L" a ", L" b "}}}},
      {"items and a path", L"(#=Items|3#|#Name#)", {L"", L""}, {{L'=', L"Items", {L"3", L"Name"}}}},

      {"an escaped bar", L"(#%x^|y#)", {L"", L""}, {{L'%', L"x|y", {}}}},
      {"an escaped parameter separator", L"(#%x|a^#|#b#)", {L"", L""}, {{L'%', L"x", {L"a#|#b"}}}},
      {"an escaped opener in a mark", L"(#%x^(#y#)", {L"", L""}, {{L'%', L"x(#y", {}}}},
      {"an escaped closer in a mark", L"(#%x^#)y#)", {L"", L""}, {{L'%', L"x#)y", {}}}},
      {"an escaped escape in a mark", L"(#%x^^#)", {L"", L""}, {{L'%', L"x^", {}}}},
      {"an ordinary escape in a mark", L"(#%x^y#)", {L"", L""}, {{L'%', L"x^y", {}}}},
      {"an escaped type character", L"(#^%x#)", {L"", L""}, {{0, L"^%x", {}}}},

      {"a nested mark is text", L"(#%x|(#%y#)#)", {L"", L""}, {{L'%', L"x", {L"(#%y#)"}}}},
      {"nested separators are text", L"(#%x|(#%y|a#|#b#)#|#c#)", {L"", L""}, {{L'%', L"x", {L"(#%y|a#|#b#)", L"c"}}}},
      {"a nested mark in a name", L"(#%(#:y|z#)#)", {L"", L""}, {{L'%', L"(#:y|z#)", {}}}},
      {"twice nested", L"(#%x|(#%y|(#:z#)#)#)", {L"", L""}, {{L'%', L"x", {L"(#%y|(#:z#)#)"}}}},
      {"an escape in a nested mark is taken off once",
       L"(#%x|(#%y^^|z#)#)",
       {L"", L""},
       {{L'%', L"x", {L"(#%y^|z#)"}}}},

      {"a comment of the text templator", L"(# note #)", {L"", L""}, {{L' ', L"note ", {}}}, kTextTypes},
      {"one that begins with a tab", L"(#\tnote#)", {L"", L""}, {{L'\t', L"note", {}}}, kTextTypes},
      {"with a carriage return", L"(#\r\nx#)", {L"", L""}, {{L'\r', L"\nx", {}}}, kTextTypes},
      {"with a line feed", L"(#\nx#)", {L"", L""}, {{L'\n', L"x", {}}}, kTextTypes},
      {"the text templator has no other types", L"(#%x#)", {L"", L""}, {{0, L"%x", {}}}, kTextTypes},
      {"a bar first, where it is not a type", L"(#|a#)", {L"", L""}, {{0, L"", {L"a"}}}, kTextTypes},

      {"characters beyond 16 bits",
       L"\U0001F600(#%\U0001F601|\U0001F602#)",
       {L"\U0001F600", L""},
       {{L'%', L"\U0001F601", {L"\U0001F602"}}}},
      {"lone surrogates",
       W(1, wchar_t{0xD800}) + L"(#%" + W(1, wchar_t{0xDFFF}) + L"#)",
       {W(1, wchar_t{0xD800}), L""},
       {{L'%', W(1, wchar_t{0xDFFF}), {}}}},
      {"a NUL belongs to a name", W(L"(#%a\0b#)", 8), {L"", L""}, {{L'%', W(L"a\0b", 3), {}}}},
      {"a run ends at its NUL", W(L"a\0b(#%x#)c", 10), {L"a", L"c"}, {{L'%', L"x", {}}}},
  };
  return all;
}

TEST(Scanner, ReadsTextsAndMarks) {
  for (const Case& row : cases()) {
    SCOPED_TRACE(row.about);
    const Parsed parsed = parse(row.text, row.types);
    EXPECT_EQ(S_OK, parsed.hr);
    EXPECT_EQ(row.texts, parsed.texts);
    EXPECT_EQ(row.marks, parsed.marks);
    EXPECT_EQ(parsed.marks.size() + 1, parsed.texts.size());
  }
}

TEST(Scanner, NamesTheFaultOfATemplateOutOfOrder) {
  struct Faulty {
    std::wstring text;
    std::vector<std::wstring> texts;  // what was read before the fault
    std::size_t marks;
  };
  const Faulty rows[] = {
      {L"(#%x", {L""}, 0},
      {L"(#", {L""}, 0},
      {L"a(#%x|(#%y#)", {L"a"}, 0},
      {L"a(#%x^#)", {L"a"}, 0},
      {L"text #) more", {}, 0},
      {L"a(#%x#)b#)", {L"a"}, 1},
      {L"a(#%x#)b(#%y", {L"a", L"b"}, 1},
      {L"(#%x#)#)", {L""}, 1},
  };
  for (const Faulty& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    take_error();
    const Parsed parsed = parse(row.text);
    EXPECT_EQ(E_FAIL, parsed.hr);
    const ErrorText error = take_error();
    EXPECT_EQ(L"Templator", error.source);
    EXPECT_EQ(L"Invalid mark order.", error.description);
    EXPECT_EQ(row.texts, parsed.texts);
    EXPECT_EQ(row.marks, parsed.marks.size());
  }
}

TEST(Scanner, StopsAtTheClosingDelimiterOfTheMark) {
  Engine engine;
  CComBSTR text(L"ab(#%x|y#)cd");
  unsigned int pos = 4;
  CMarkData mark;
  EXPECT_EQ(S_OK, engine.GetMarkData(text, pos, mark));
  EXPECT_EQ(8u, pos);
  EXPECT_EQ((Mark{L'%', L"x", {L"y"}}), mark_of(mark));
}

TEST(Scanner, ReadsAMarkOfNothing) {
  Engine engine;
  unsigned int pos = 0;
  CMarkData mark;
  EXPECT_EQ(E_FAIL, engine.GetMarkData(nullptr, pos, mark));
  EXPECT_EQ(S_OK, parse({}).hr);
  CTemplate tmpl;
  EXPECT_EQ(S_OK, engine.Parse(nullptr, tmpl));
  ASSERT_EQ(1u, tmpl.Texts.size());
  EXPECT_STREQ(L"", tmpl.Texts[0]);
}

// Reads one character at a time, by the rules as they are told to template writers.
Parsed parse_slowly(const std::wstring& text, const std::wstring& types) {
  Parsed parsed;
  std::wstring run;
  std::size_t pos = 0;
  const auto take = [&](const wchar_t* delimiter) {
    if (text.compare(pos, std::wcslen(delimiter), delimiter) != 0) return false;
    pos += std::wcslen(delimiter);
    return true;
  };
  const auto escaped = [&](std::initializer_list<const wchar_t*> protectable) -> std::wstring {
    for (const wchar_t* delimiter : protectable) {
      if (take(delimiter)) return delimiter;
    }
    return L"^";
  };
  while (pos < text.size()) {
    if (take(L"^")) {
      run += escaped({L"^", L"(#", L"#)"});
    } else if (take(L"(#")) {
      parsed.texts.push_back(std::exchange(run, L""));
      Mark mark;
      std::wstring* target = &mark.name;
      int depth = 0;
      bool closed = false;
      if (pos < text.size() && types.find(text[pos]) != std::wstring::npos) mark.type = text[pos++];
      while (pos < text.size()) {
        if (take(L"^")) {
          *target += escaped({L"^", L"(#", L"#)", L"|", L"#|#"});
        } else if (take(L"(#")) {
          *target += L"(#";
          ++depth;
        } else if (take(L"#)")) {
          if (depth == 0) {
            closed = true;
            break;
          }
          *target += L"#)";
          --depth;
        } else if (take(L"|")) {
          if (depth == 0 && mark.params.empty()) {
            target = &mark.params.emplace_back();
          } else {
            *target += L"|";
          }
        } else if (take(L"#|#")) {
          if (depth == 0) {
            target = &mark.params.emplace_back();
          } else {
            *target += L"#|#";
          }
        } else {
          *target += text[pos++];
        }
      }
      if (!closed) {
        parsed.hr = E_FAIL;
        return parsed;
      }
      parsed.marks.push_back(mark);
    } else if (take(L"#)")) {
      parsed.hr = E_FAIL;
      return parsed;
    } else {
      run += text[pos++];
    }
  }
  parsed.texts.push_back(run);
  return parsed;
}

TEST(Scanner, AgreesWithACharacterByCharacterReading) {
  std::mt19937 random(20240601);
  const std::wstring pieces[] = {L"^", L"(", L"#", L")", L"|", L"(#", L"#)", L"#|#", L"%", L"a", L" ", L"bc"};
  for (int round = 0; round < 20000; ++round) {
    std::wstring text;
    const std::size_t length = random() % 24;
    for (std::size_t i = 0; i < length; ++i) text += pieces[random() % std::size(pieces)];
    EXPECT_EQ(parse_slowly(text, kChildTypes), parse(text)) << testing::PrintToString(text);
    EXPECT_EQ(parse_slowly(text, kTextTypes), parse(text, kTextTypes)) << testing::PrintToString(text);
  }
}

TEST(Scanner, GivesTheSameAnswerHoweverATemplateIsCut) {
  for (const Case& row : cases()) {
    if (row.text.find(L'\0') != std::wstring::npos) continue;
    for (std::size_t cut = 0; cut <= row.text.size(); ++cut) {
      const std::wstring text = row.text.substr(0, cut);
      EXPECT_EQ(parse_slowly(text, row.types), parse(text, row.types)) << testing::PrintToString(text);
    }
  }
}

TEST(Scanner, NestsAsDeepAsMemoryGoes) {
  constexpr int kDepth = 10000;
  std::wstring text;
  for (int i = 0; i < kDepth; ++i) text += L"(#%x|";
  for (int i = 0; i < kDepth; ++i) text += L"#)";
  const Parsed parsed = parse(text);
  EXPECT_EQ(S_OK, parsed.hr);
  ASSERT_EQ(1u, parsed.marks.size());
  ASSERT_EQ(1u, parsed.marks[0].params.size());
  EXPECT_EQ(text.substr(5, text.size() - 7), parsed.marks[0].params[0]);
  EXPECT_EQ(E_FAIL, parse(text.substr(0, text.size() - 2)).hr);
}

TEST(Scanner, ReadsAHundredThousandMarks) {
  constexpr std::size_t kMarks = 100000;
  std::wstring text;
  for (std::size_t i = 0; i < kMarks; ++i) text += L"a(#%x|y#)";
  const Parsed parsed = parse(text);
  EXPECT_EQ(S_OK, parsed.hr);
  EXPECT_EQ(std::vector<Mark>(kMarks, Mark{L'%', L"x", {L"y"}}), parsed.marks);
  EXPECT_EQ(kMarks + 1, parsed.texts.size());
}

TEST(Scanner, ReadsATemplateOfFiftyMegabytes) {
  constexpr std::size_t kCharacters = 50'000'000 / sizeof(wchar_t);
  std::wstring text(kCharacters, L'.');
  text.replace(kCharacters / 2, 6, L"(#%x#)");
  const Parsed parsed = parse(text);
  EXPECT_EQ(S_OK, parsed.hr);
  ASSERT_EQ(2u, parsed.texts.size());
  EXPECT_EQ(kCharacters - 6, parsed.texts[0].size() + parsed.texts[1].size());
}

}  // namespace
}  // namespace test
