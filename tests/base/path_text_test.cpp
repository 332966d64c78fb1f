#include "base/path_text.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> segments_of(std::string_view path) {
  std::vector<std::string> segments;
  std::size_t at = 0;
  for (std::string_view segment; !(segment = base::next_segment(path, &at)).empty();) segments.emplace_back(segment);
  return segments;
}

TEST(PathText, TurnsEveryBackslashRound) {
  EXPECT_EQ("a/b/c", base::with_slashes("a\\b/c"));
  EXPECT_EQ("//host/", base::with_slashes("\\\\host\\"));
  EXPECT_EQ("", base::with_slashes(""));
}

TEST(PathText, NamesFollowOneAnotherWhateverTheSlashes) {
  const std::vector<std::string> expected{"a", ".", "..", "b c"};
  EXPECT_EQ(expected, segments_of("a/./../b c"));
  EXPECT_EQ(expected, segments_of("//a///.//../b c//"));
  EXPECT_TRUE(segments_of("").empty());
  EXPECT_TRUE(segments_of("///").empty());
}

TEST(PathText, GoesPastTheNameThatItGave) {
  std::size_t at = 0;
  EXPECT_EQ("ab", base::next_segment("/ab/c", &at));
  EXPECT_EQ(3U, at);
}

}  // namespace
