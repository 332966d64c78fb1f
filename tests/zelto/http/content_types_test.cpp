#include "http/content_types.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(ContentTypes, FollowTheLastExtensionInAnyCase) {
  EXPECT_EQ(content_type_of("a.css"), "text/css; charset=utf-8");
  EXPECT_EQ(content_type_of("/dir.html/A.TAR.GZ"), "application/gzip");
  EXPECT_EQ(content_type_of("x.Zip"), "application/zip");
  EXPECT_EQ(content_type_of("x.avif"), "image/avif");
  for (const char* unknown : {"", "css", ".", "a.", "a.unknown"})
    EXPECT_EQ(content_type_of(unknown), "application/octet-stream") << unknown;
}

}  // namespace
}  // namespace zelto
