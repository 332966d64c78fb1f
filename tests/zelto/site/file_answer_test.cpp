#include "site/file_answer.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(ByteRange, SelectsOneRange) {
  struct Row {
    const char* header;
    std::uint64_t size, first, length;
  };
  const Row rows[] = {{"bytes=0-0", 10, 0, 1},
                      {"bytes=0-", 10, 0, 10},
                      {"Bytes=2-5", 10, 2, 4},
                      {"bytes=9-9", 10, 9, 1},
                      {"bytes=5-100", 10, 5, 5},
                      {"bytes=-3", 10, 7, 3},
                      {"bytes=-100", 10, 0, 10},
                      {"bytes= 1-2", 10, 1, 2},
                      {"bytes=0-99999999999999999999", 10, 0, 10},
                      {"bytes=-99999999999999999999", 10, 0, 10}};
  for (const Row& row : rows) {
    const auto range = parse_range(row.header, row.size);
    ASSERT_TRUE(range && range->satisfiable) << row.header;
    EXPECT_EQ(row.first, range->first) << row.header;
    EXPECT_EQ(row.length, range->length) << row.header;
  }
}

TEST(ByteRange, TellsWhatCannotBeSatisfied) {
  for (const char* header : {"bytes=10-", "bytes=10-20", "bytes=-0", "bytes=99999999999999999999-"}) {
    const auto range = parse_range(header, 10);
    ASSERT_TRUE(range) << header;
    EXPECT_FALSE(range->satisfiable) << header;
  }
  EXPECT_FALSE(parse_range("bytes=0-", 0)->satisfiable);
  EXPECT_FALSE(parse_range("bytes=-1", 0)->satisfiable);
}

TEST(ByteRange, IgnoresWhatIsNotASingleRange) {
  for (const char* header : {"", "bytes", "bytes=", "bytes=-", "bytes=a-b", "bytes=1-b", "bytes=5-2", "bytes=1",
                             "bytes=0-1,3-4", "lines=1-2", "bytes=+1-2", "bytes=1-2-3"})
    EXPECT_EQ(false, parse_range(header, 10).has_value()) << header;
}

TEST(FileAnswer, TellsTheTypeByTheLastExtensionInAnyCase) {
  EXPECT_EQ("text/css; charset=utf-8", content_type_of("a.css"));
  EXPECT_EQ("application/gzip", content_type_of("/dir.html/A.TAR.GZ"));
  EXPECT_EQ("application/zip", content_type_of("x.Zip"));
  EXPECT_EQ("image/avif", content_type_of("x.avif"));
  for (const char* unknown : {"", "css", ".", "a.", "a.unknown"})
    EXPECT_EQ("application/octet-stream", content_type_of(unknown)) << unknown;
}

}  // namespace
}  // namespace zelto
