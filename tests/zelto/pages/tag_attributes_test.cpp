#include "pages/tag_attributes.h"

#include <gtest/gtest.h>

namespace zelto::pages {
namespace {

TEST(TagAttributes, ReadsEveryWayToWriteAValue) {
  const auto tag = read_tag(
      LR"( a="1 > 2" B='x"y' c = plain d e=)"
      L">rest",
      0);
  ASSERT_TRUE(tag);
  EXPECT_EQ(L"1 > 2", tag->value_of(L"A"));
  EXPECT_EQ(L"x\"y", tag->value_of(L"b"));
  EXPECT_EQ(L"plain", tag->value_of(L"c"));
  EXPECT_TRUE(tag->has(L"d"));
  EXPECT_EQ(L"", tag->value_of(L"d"));
  EXPECT_TRUE(tag->has(L"e"));
  EXPECT_FALSE(tag->has(L"f"));
  EXPECT_EQ(L"", tag->value_of(L"f"));
  EXPECT_EQ(34u, tag->end);
}

TEST(TagAttributes, TakesTheFirstOfTwoOfOneName) {
  EXPECT_EQ(L"server", read_tag(L" runat=server RUNAT=client>", 0)->value_of(L"runat"));
}

TEST(TagAttributes, IgnoresStrayCharacters) {
  const auto tag = read_tag(L" = \" / a=1 />", 0);
  ASSERT_TRUE(tag);
  EXPECT_EQ(L"1", tag->value_of(L"a"));
}

TEST(TagAttributes, NeedsAnEnd) {
  EXPECT_FALSE(read_tag(L" a=1 b", 0));
  EXPECT_FALSE(read_tag(L" a=\"1>\" ", 0));
  EXPECT_FALSE(read_tag(L"", 0));
}

TEST(ServerTags, AreReadAsEachIsByItself) {
  const std::wstring_view text = L" a=1 <b c='<d runat=server>' runat=client e> runat=\"server\" f> runat=server g='";
  ServerTags tags(text);
  for (const std::size_t at : {5, 0, 7, 11, 14, 28, 42, 44, 61, 66, 79, 44}) {
    const auto expected = read_tag(text, at);
    const bool is_for_server = expected && expected->value_of(L"runat") == L"server";
    const auto tag = tags.read(at);
    ASSERT_EQ(is_for_server, tag.has_value()) << at;
    if (!tag) continue;
    EXPECT_EQ(expected->end, tag->end) << at;
  }
}

TEST(TagAttributes, MatchesWholeWordsInAnyLetterCase) {
  EXPECT_TRUE(has_word(L"xSCRIPT ", 1, L"script"));
  EXPECT_TRUE(has_word(L"script", 0, L"script"));
  EXPECT_TRUE(has_word(L"script>", 0, L"script"));
  EXPECT_FALSE(has_word(L"scripts", 0, L"script"));
  EXPECT_FALSE(has_word(L"script-x", 0, L"script"));
  EXPECT_FALSE(has_word(L"script_x", 0, L"script"));
  EXPECT_FALSE(has_word(L"script1", 0, L"script"));
  EXPECT_FALSE(has_word(L"scrip", 0, L"script"));
  EXPECT_FALSE(has_word(L"script", 7, L"script"));
}

TEST(TagAttributes, ShowsOtherCharactersAsQuestionMarks) { EXPECT_EQ("a??~?", ascii(L"a\u00fc\n~\x7f")); }

}  // namespace
}  // namespace zelto::pages
