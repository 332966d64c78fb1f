#include "text/path_segments.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

using Segments = std::vector<std::string_view>;

TEST(PathSegments, AreTheNamesBetweenTheSlashes) {
  EXPECT_EQ(Segments(), path_segments(""));
  EXPECT_EQ(Segments(), path_segments("/"));
  EXPECT_EQ((Segments{"a", ".", "b.c", "..", "..."}), path_segments("/a//./b.c/../..."));
  EXPECT_EQ((Segments{"a", "b"}), path_segments("a/b/"));
}

TEST(PathSegments, AreResolvedUpToTheRoot) {
  struct Row {
    const char* path;
    std::optional<std::string> resolved;
  };
  const Row rows[] = {{"", ""},
                      {"/", ""},
                      {"/a/./b//c/", "/a/b/c"},
                      {"/a/..", ""},
                      {"a/../b", "/b"},
                      {"/..", std::nullopt},
                      {"/a/../..", std::nullopt},
                      {"/a/../../a", std::nullopt}};
  for (const Row& row : rows) EXPECT_EQ(row.resolved, resolve_dots(row.path)) << row.path;
}

TEST(PathSegments, HaveAnExtensionFromTheLastDotOn) {
  EXPECT_EQ(".b", extension_of("a.b"));
  EXPECT_EQ(".gz", extension_of("a.tar.gz"));
  EXPECT_EQ(".", extension_of("a."));
  EXPECT_EQ("", extension_of("a"));
}

}  // namespace
}  // namespace zelto
