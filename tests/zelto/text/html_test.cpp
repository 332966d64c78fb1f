#include "text/html.h"

#include <gtest/gtest.h>

#include <korlib/combstr.h>

#include "text/charset.h"

namespace zelto {
namespace {

constexpr LONG kLatin1 = 28591;

TEST(Html, NamesWhatMarkupIsMadeOf) {
  EXPECT_EQ(L"&lt;a href=&quot;x&quot;&gt;b &amp; c&lt;/a&gt;", html_encode(L"<a href=\"x\">b & c</a>", kUtf8CodePage));
  EXPECT_EQ(L"", html_encode(L"", kUtf8CodePage));
}

TEST(Html, WritesWhatTheCodePageLacksAsANumber) {
  EXPECT_EQ(L"\u00e4\u3042", html_encode(L"\u00e4\u3042", kUtf8CodePage));
  EXPECT_EQ(L"\u00e4&#12354;", html_encode(L"\u00e4\u3042", kLatin1));
}

TEST(Html, MakesTheSameAString) {
  for (const wchar_t* text : {L"", L"plain", L"<a & b>", L"\u00e4 < \u3042"}) {
    CComBSTR encoded;
    encoded.attach(html_encoded(text, kLatin1));
    EXPECT_EQ(html_encode(text, kLatin1), encoded.view());
    EXPECT_NE(nullptr, encoded.get());
  }
}

// Whatever the blocks are in which it is gone through.
TEST(Html, FindsACharacterWhereverItStands) {
  for (std::size_t length = 1; length < 70; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      std::wstring text(length, L'!');
      text[at] = L'>';
      EXPECT_EQ(std::wstring(at, L'!') + L"&gt;" + std::wstring(length - at - 1, L'!'),
                html_encode(text, kUtf8CodePage));
      text[at] = L'\u3042';
      EXPECT_EQ(std::wstring(at, L'!') + L"&#12354;" + std::wstring(length - at - 1, L'!'), html_encode(text, kLatin1));
    }
  }
}

// Those beside the four, and those that differ from them in a bit.
TEST(Html, LeavesAllElseAlone) {
  for (wchar_t c = 1; c < 0x80; ++c) {
    const bool is_named = c == L'<' || c == L'>' || c == L'&' || c == L'"';
    const std::wstring text(40, c);
    EXPECT_EQ(is_named, text != html_encode(text, kUtf8CodePage)) << static_cast<int>(c);
  }
}

}  // namespace
}  // namespace zelto
