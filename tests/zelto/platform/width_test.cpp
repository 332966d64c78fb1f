#include <gtest/gtest.h>
#include <korlib/winapi.h>

#include <map>
#include <string>

namespace {

constexpr unsigned int kComponentFullWidth = 0x80000000u;

// As the component calls it: the size first, then the mapping into exactly that size.
std::wstring map(unsigned int flags, const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size = LCMapStringW(0x110000, flags, text.data(), length, nullptr, 0);
  std::wstring mapped(static_cast<std::size_t>(size) + 1, L'#');
  EXPECT_EQ(size, LCMapStringW(0x110000, flags, text.data(), length, mapped.data(), size));
  EXPECT_EQ(L'#', mapped.back()) << "written beyond the buffer";
  mapped.pop_back();
  return mapped;
}

std::wstring full(const std::wstring& text) { return map(kComponentFullWidth, text); }
std::wstring half(const std::wstring& text) { return map(LCMAP_HALFWIDTH, text); }

// The decompositions <wide> and <narrow> of UnicodeData.txt: the characters from `form` on and those that
// they stand for.
struct Stretch {
  wchar_t form;
  std::wstring ordinary;
};

std::wstring from_to(wchar_t first, wchar_t last) {
  std::wstring run;
  for (wchar_t c = first; c <= last; ++c) run.push_back(c);
  return run;
}

const Stretch kWide[] = {
    {0x3000, L" "},
    {0xFF01, from_to(0x21, 0x7E)},
    {0xFF5F, L"\u2985\u2986"},
    {0xFFE0, L"\u00A2\u00A3\u00AC\u00AF\u00A6\u00A5\u20A9"},
};
const Stretch kNarrow[] = {
    {0xFF61, L"。「」、・ヲァィゥェォャュョッー"},
    {0xFF71, L"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン"},
    {0xFF9E, L"\u3099\u309A"},
    {0xFFA0, L"\u3164" + from_to(0x3131, 0x314E)},
    {0xFFC2, from_to(0x314F, 0x3154)},
    {0xFFCA, from_to(0x3155, 0x315A)},
    {0xFFD2, from_to(0x315B, 0x3160)},
    {0xFFDA, from_to(0x3161, 0x3163)},
    {0xFFE8, L"\u2502\u2190\u2191\u2192\u2193\u25A0\u25CB"},
};

// Every character that has another form, and that form.
template <std::size_t Count>
void add(const Stretch (&runs)[Count], std::map<wchar_t, wchar_t>& to_form, std::map<wchar_t, wchar_t>& to_ordinary) {
  for (const Stretch& run : runs) {
    wchar_t form = run.form;
    for (const wchar_t c : run.ordinary) {
      to_form[c] = form;
      to_ordinary[form++] = c;
    }
  }
}

TEST(Width, KnowsTheFormsOfUnicodeAndNoOthers) {
  std::map<wchar_t, wchar_t> to_full;
  std::map<wchar_t, wchar_t> to_half;
  add(kWide, to_full, to_half);
  add(kNarrow, to_half, to_full);
  ASSERT_EQ(104u + 122u, to_full.size());
  ASSERT_EQ(104u + 122u, to_half.size());
  for (wchar_t c = 0; c < 0x20000; ++c) {
    const std::wstring one(1, c);
    const auto wide = to_full.find(c);
    ASSERT_EQ(std::wstring(1, wide == to_full.end() ? c : wide->second), full(one)) << static_cast<int>(c);
    const auto narrow = to_half.find(c);
    const std::wstring halved = half(one);
    // Voiced kana become two characters; they have a test of their own.
    if (halved.size() == 1) {
      ASSERT_EQ(std::wstring(1, narrow == to_half.end() ? c : narrow->second), halved) << static_cast<int>(c);
    }
  }
}

TEST(Width, EveryFormComesBack) {
  for (const Stretch& run : kWide) {
    EXPECT_EQ(run.ordinary, half(full(run.ordinary)));
  }
  for (const Stretch& run : kNarrow) {
    EXPECT_EQ(run.ordinary, full(half(run.ordinary)));
  }
}

// All twenty-eight, in the order of the kana table.
TEST(Width, VoicedMarksJoinTheirKanaAndPartFromThem) {
  const std::wstring voiced = L"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴヷヺ";
  const std::wstring unvoiced = L"カキクケコサシスセソタチツテトハヒフヘホウワヲ";
  const std::wstring semi_voiced = L"パピプペポ";
  const std::wstring semi_unvoiced = L"ハヒフヘホ";
  ASSERT_EQ(unvoiced.size(), voiced.size());
  const auto expect_pairs = [](const std::wstring& marked, const std::wstring& plain, wchar_t mark) {
    std::wstring halves;
    for (std::size_t i = 0; i < marked.size(); ++i) {
      const std::wstring pair = half(plain.substr(i, 1)) + mark;
      EXPECT_EQ(pair, half(marked.substr(i, 1)));
      EXPECT_EQ(marked.substr(i, 1), full(pair));
      EXPECT_EQ(marked.substr(i, 1), full(plain.substr(i, 1) + mark));  // the kana is wide already
      halves += pair;
    }
    EXPECT_EQ(halves, half(marked));
    EXPECT_EQ(marked, full(halves));
  };
  expect_pairs(voiced, unvoiced, 0xFF9E);
  expect_pairs(semi_voiced, semi_unvoiced, 0xFF9F);
}

TEST(Width, OnlyVoicedKanaBecomeLonger) {
  const std::wstring longer = L"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴヷヺパピプペポ";
  for (wchar_t c = 1; c < 0x20000; ++c) {
    const std::size_t expected = longer.find(c) == std::wstring::npos ? 1 : 2;
    ASSERT_EQ(static_cast<int>(expected), LCMapStringW(0, LCMAP_HALFWIDTH, &c, 1, nullptr, 0)) << static_cast<int>(c);
  }
}

TEST(Width, MarksWithoutAVoicedKanaStandAlone) {
  EXPECT_EQ(L"\u3099", full(L"\uFF9E"));
  EXPECT_EQ(L"\u30A2\u3099", full(L"\uFF71\uFF9E"));        // a vowel is not voiced
  EXPECT_EQ(L"\u30AB\u309A", full(L"\uFF76\uFF9F"));        // ka is not semi-voiced
  EXPECT_EQ(L"\u30AC\u3099", full(L"\uFF76\uFF9E\uFF9E"));  // one mark is enough
  EXPECT_EQ(L"\u30AB\u3000\u3099", full(L"\uFF76 \uFF9E"));
  EXPECT_EQ(L"\uFF71\uFF9E", half(L"\u30A2\u3099"));
  EXPECT_EQ(L"\uFF71\uFF9E", half(full(L"\uFF71\uFF9E")));
}

TEST(Width, TextWithoutEitherFormStaysAsItIs) {
  for (const std::wstring& text : {
           std::wstring(L"漢字かながぎ\u00E9\u0301\u1100\uAC00\U0001F600"),
           std::wstring(L"ヰヱヵヶヸヹヽヾ"),  // katakana, but without a half form
           std::wstring(L"\uFFBF\uFFC0\uFFC8\uFFE7\uFFEF\uFFFD"),
           std::wstring(L"\u3042\0\u3044", 3),
           std::wstring{static_cast<wchar_t>(0xD800), 0x110000, 0x7FFFFFFF, static_cast<wchar_t>(0xFFFFFFFFu)},
           std::wstring(),
       }) {
    EXPECT_EQ(text, full(text));
    EXPECT_EQ(text, half(text));
  }
}

TEST(Width, MapsMixedTextBothWays) {
  const struct {
    const wchar_t* half;
    const wchar_t* full;
  } rows[] = {
      {L"abc XYZ 019", L"ａｂｃ　ＸＹＺ　０１９"},
      {L"!\"#$~\\", L"！＂＃＄～＼"},
      {L"ﾊﾞﾅﾅ ¥100", L"バナナ　￥１００"},
      {L"｢ﾊﾟﾘ｣､ﾄﾞｰﾊﾞｰ｡", L"「パリ」、ドーバー。"},
      {L"ﾡￂﾤ", L"ㄱㅏㄴ"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.full, full(row.half));
    EXPECT_EQ(row.full, map(LCMAP_FULLWIDTH, row.half));
    EXPECT_EQ(row.half, half(row.full));
    EXPECT_EQ(row.half, half(row.half));
    EXPECT_EQ(row.full, full(row.full));
  }
}

TEST(Width, CountsUpToTheNulForANegativeLength) {
  EXPECT_EQ(2, LCMapStringW(0, LCMAP_FULLWIDTH, L"ab\0c", -1, nullptr, 0));
}

TEST(Width, RefusesABufferThatIsTooSmall) {
  wchar_t buffer[2] = {L'#', L'#'};
  EXPECT_EQ(0, LCMapStringW(0, LCMAP_HALFWIDTH, L"\u30AC", 1, buffer, 1));  // becomes two characters
  EXPECT_EQ(L'#', buffer[1]);
  EXPECT_EQ(1, LCMapStringW(0, LCMAP_FULLWIDTH, L"\uFF76\uFF9E", 2, buffer, 1));
}

TEST(Width, RefusesWhatItCannotDo) {
  EXPECT_EQ(0, LCMapStringW(0, LCMAP_FULLWIDTH, nullptr, 1, nullptr, 0));
  EXPECT_EQ(0, LCMapStringW(0, 0x100, L"a", 1, nullptr, 0));
}

}  // namespace
