#include "site/content_types.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(ContentTypes, FollowTheLastExtensionInAnyCase) {
  EXPECT_EQ("text/css; charset=utf-8", content_type_of("a.css"));
  EXPECT_EQ("application/gzip", content_type_of("/dir.html/A.TAR.GZ"));
  EXPECT_EQ("application/zip", content_type_of("x.Zip"));
  EXPECT_EQ("image/avif", content_type_of("x.avif"));
  for (const char* unknown : {"", "css", ".", "a.", "a.unknown"})
    EXPECT_EQ("application/octet-stream", content_type_of(unknown)) << unknown;
}

}  // namespace
}  // namespace zelto
