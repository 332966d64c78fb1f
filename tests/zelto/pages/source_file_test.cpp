#include "pages/source_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "zelto/pages/site_fixture.h"

namespace zelto::pages {
namespace {

using SourceFile = test::SiteFolder;

TEST_F(SourceFile, DecodesByItsMarkBeforeTheCodePage) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view bytes;
    LONG code_page;
    const wchar_t* text;
  } rows[] = {
      {"\xC3\xBC"sv, 65001, L"\u00fc"},
      {"\xEF\xBB\xBF\xC3\xBC"sv, 65001, L"\u00fc"},
      {"\xEF\xBB\xBF\xC3\xBC"sv, 1252, L"\u00fc"},
      {"\xFC\x80"sv, 1252, L"\u00fc\u20ac"},
      {"\x83\x65\xB6"sv, 932, L"\u30c6\uff76"},
      {"\xFF\xFE\xFC\x00\x3D\xD8\x00\xDE"sv, 65001, L"\u00fc\U0001F600"},
      {"\xFE\xFF\x00\xFC\xD8\x3D\xDE\x00"sv, 932, L"\u00fc\U0001F600"},
      {"a\xFF"sv, 65001, L"a\ufffd"},
      {""sv, 65001, L""},
      {"\xEF\xBB\xBF"sv, 65001, L""},
      {"\xFF\xFE"sv, 65001, L""},
  };
  for (const auto& row : rows) EXPECT_EQ(row.text, decode_source(row.bytes, row.code_page));
}

TEST_F(SourceFile, ReadsRegularFilesOnly) {
  EXPECT_EQ("bytes", read_source(write("a.asp", "bytes"))->bytes);
  EXPECT_EQ("", read_source(write("empty.asp", ""))->bytes);
  EXPECT_FALSE(read_source(root));
  EXPECT_FALSE(read_source(path_of("none.asp")));
  EXPECT_FALSE(stamp_of(path_of("none.asp")));
  EXPECT_FALSE(stamp_of(root));
}

// The kernel's own files hold less than their size says, as one does that is cut while it is read.
TEST_F(SourceFile, ReadsNoMoreThanThereIs) {
  const std::string path = "/sys/devices/system/cpu/online";
  if (!stamp_of(path)) GTEST_SKIP() << "no such files here";
  const std::string bytes = read_source(path)->bytes;
  EXPECT_LT(bytes.size(), static_cast<std::size_t>(stamp_of(path)->size));
  EXPECT_EQ(std::string::npos, bytes.find('\0'));
}

TEST_F(SourceFile, DoesNotWaitAtANamedPipe) {
  ASSERT_EQ(0, ::mkfifo(path_of("pipe.asp").c_str(), 0600));
  EXPECT_FALSE(read_source(path_of("pipe.asp")));
}

TEST_F(SourceFile, RefusesMoreThanItMayRead) {
  write("large.asp", "");
  ASSERT_EQ(0, ::truncate(path_of("large.asp").c_str(), kMaxSource));
  EXPECT_TRUE(read_source(path_of("large.asp")));
  ASSERT_EQ(0, ::truncate(path_of("large.asp").c_str(), kMaxSource + 1));
  EXPECT_FALSE(read_source(path_of("large.asp")));
}

TEST_F(SourceFile, KnowsThatAFreshFileMayChangeUnseen) {
  EXPECT_FALSE(read_source(write("a.asp", "a"))->is_settled);
  EXPECT_TRUE(read_source("/bin/sh")->is_settled);
}

TEST_F(SourceFile, SeesAnEditThatRestoresSizeAndTime) {
  const std::string path = write("a.asp", "one");
  const auto before = stamp_of(path);
  struct stat status {};
  ASSERT_EQ(0, ::stat(path.c_str(), &status));
  // The entry's own time moves with the file system's clock, so the edit is repeated until that has ticked.
  for (int tries = 0; tries < 1'000'000 && stamp_of(path) == before; ++tries) {
    write("a.asp", "two");
    const timespec times[] = {status.st_atim, status.st_mtim};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, path.c_str(), times, 0));
  }
  EXPECT_NE(stamp_of(path), before);
  EXPECT_EQ(before->modified, stamp_of(path)->modified);
  EXPECT_EQ(before->size, stamp_of(path)->size);
}

}  // namespace
}  // namespace zelto::pages
