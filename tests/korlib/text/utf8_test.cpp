#include <korlib/text.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <korlib_host/unicode.h>

namespace {

std::wstring decoded(std::string_view bytes) {
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'?');
  EXPECT_EQ(text.size(), utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size()));
  return text;
}

std::string encoded(std::wstring_view text) {
  std::string bytes(utf32_utf8(text.data(), text.size(), nullptr, 0), '?');
  EXPECT_EQ(bytes.size(), utf32_utf8(text.data(), text.size(), bytes.data(), bytes.size()));
  return bytes;
}

// The examples of RFC 3629, section 7, and the ends of every length.
const struct {
  std::wstring_view text;
  std::string_view bytes;
} kPairs[] = {
    {L"", ""},
    {L"A\x2262\x0391.", "A\xE2\x89\xA2\xCE\x91."},
    {L"\xD55C\xAD6D\xC5B4", "\xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4"},
    {L"\x65E5\x672C\x8A9E", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"},
    {L"\xFEFF\x233B4", "\xEF\xBB\xBF\xF0\xA3\x8E\xB4"},
    {L"\x7F", "\x7F"},
    {L"\x80", "\xC2\x80"},
    {L"\x7FF", "\xDF\xBF"},
    {L"\x800", "\xE0\xA0\x80"},
    {L"\xD7FF", "\xED\x9F\xBF"},
    {L"\xE000", "\xEE\x80\x80"},
    {L"\xFFFF", "\xEF\xBF\xBF"},
    {L"\x10000", "\xF0\x90\x80\x80"},
    {L"\x10FFFF", "\xF4\x8F\xBF\xBF"},
    {std::wstring_view(L"a\0b", 3), std::string_view("a\0b", 3)},
};

TEST(Utf8, ConvertsBothWays) {
  for (const auto& pair : kPairs) {
    EXPECT_EQ(pair.bytes, encoded(pair.text));
    EXPECT_EQ(pair.text, decoded(pair.bytes));
  }
}

TEST(Utf8, GivesEveryCharacterBackUnchanged) {
  std::wstring all;
  for (unsigned c = 0; c <= 0x10FFFF; ++c) {
    if (c < 0xD800 || c > 0xDFFF) all += static_cast<wchar_t>(c);
  }
  EXPECT_EQ(all, decoded(encoded(all)));
}

TEST(Utf8, ReplacesWhatIsNoCharacterWhenEncoding) {
  const wchar_t no_characters[] = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDFFF),
                                   static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
  EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", encoded({no_characters, 4}));
}

// Tables 3-8 to 3-11 of the Unicode Standard, and sequences that end too soon.
TEST(Utf8, ReplacesEachMaximalIllFormedSubsequenceOnce) {
  const struct {
    std::string_view bytes;
    std::wstring_view text;
  } cases[] = {
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82"
       "A",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"
       L"A"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF"
       "A",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"
       L"A"},
      {"\xF4\x91\x92\x93\xFF"
       "A\x80\xBF"
       "B",
       L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"
       L"A\xFFFD\xFFFD"
       L"B"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
       "A",
       L"\xFFFD\xFFFD\xFFFD\xFFFD"
       L"A"},
      {"\xC3", L"\xFFFD"},
      {"\xE3\x81", L"\xFFFD"},
      {"\xF0\x9F\x98", L"\xFFFD"},
      {"\xF0\x9F\x98\xC3\xA9", L"\xFFFD\xE9"},
      {"\xF8\x88\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, decoded(c.bytes)) << testing::PrintToString(c.bytes);
}

// A text whose runs of ASCII begin and end at every distance from a vector's edge.
std::wstring mixed_text() {
  std::wstring text;
  for (std::size_t run = 0; run < 40; ++run) text.append(run, L'a').append(1, L'\x3042');
  return text;
}

TEST(Utf8, NeverWritesBeyondTheCapacity) {
  const std::wstring text = mixed_text();
  const std::string bytes = encoded(text);
  for (std::size_t capacity = 0; capacity <= bytes.size(); ++capacity) {
    std::vector<char> out(capacity + 1, '\x7E');
    EXPECT_EQ(bytes.size(), utf32_utf8(text.data(), text.size(), out.data(), capacity));
    // Cut between characters: what is written is a prefix, and the rest of the room is untouched.
    const std::size_t written = std::string_view(out.data(), out.size()).find('\x7E');
    EXPECT_LE(written, capacity);
    EXPECT_GE(written + 3, capacity + 1);
    EXPECT_EQ(0, bytes.compare(0, written, out.data(), written));
    EXPECT_NE(0x80, static_cast<unsigned char>(bytes[written]) & 0xC0) << capacity;
    for (std::size_t i = written; i <= capacity; ++i) EXPECT_EQ('\x7E', out[i]);
  }
  for (std::size_t capacity = 0; capacity <= text.size(); ++capacity) {
    std::vector<wchar_t> out(capacity + 1, L'~');
    EXPECT_EQ(text.size(), utf8_utf32(bytes.data(), bytes.size(), out.data(), capacity));
    EXPECT_EQ(0, text.compare(0, capacity, out.data(), capacity));
    EXPECT_EQ(L'~', out[capacity]);
  }
}

TEST(Utf8, WritesNothingBehindTheFirstCharacterThatDoesNotFit) {
  char out[2] = {'?', '?'};
  EXPECT_EQ(4u, utf32_utf8(L"\x3042"
                           L"a",
                           2, out, 2));
  EXPECT_EQ('?', out[0]);
  EXPECT_EQ('?', out[1]);
}

TEST(Utf8, AcceptsNoTextAtAll) {
  EXPECT_EQ(0u, utf32_utf8(nullptr, 0, nullptr, 0));
  EXPECT_EQ(0u, utf8_utf32(nullptr, 0, nullptr, 0));
}

TEST(Utf8, ReadsOneCharacterAtATime) {
  const struct {
    std::string_view bytes;
    std::size_t length;
    char32_t value;
    bool is_well_formed;
  } rows[] = {
      {"ab", 1, U'a', true},
      {"\xC3\xA4z", 2, 0xE4, true},
      {"\xEF\xBF\xBD", 3, 0xFFFD, true},  // the replacement itself
      {"\xF0\x9F\x98\x80", 4, 0x1F600, true},
      {"\x80", 1, 0xFFFD, false},
      {"\xC0\xAF", 1, 0xFFFD, false},          // overlong
      {"\xED\xA0\x80", 1, 0xFFFD, false},      // a surrogate
      {"\xF4\x90\x80\x80", 1, 0xFFFD, false},  // above U+10FFFF
      {"\xE2\x82", 2, 0xFFFD, false},          // cut short
      {"\xE2\x82z", 2, 0xFFFD, false},
  };
  for (const auto& row : rows) {
    const korlib::Utf8Character read = korlib::first_utf8(row.bytes);
    EXPECT_EQ(row.value, read.value) << testing::PrintToString(row.bytes);
    EXPECT_EQ(row.length, read.length) << testing::PrintToString(row.bytes);
    EXPECT_EQ(row.is_well_formed, read.is_well_formed) << testing::PrintToString(row.bytes);
  }
}

}  // namespace
