#include "http/spool.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "support/temporary_folder.h"

namespace {

using zelto::Quota;
using zelto::Share;

TEST(Quota, GivesAllOfAnAmountOrNothing) {
  Quota quota(100);
  EXPECT_TRUE(quota.take(60));
  EXPECT_FALSE(quota.take(41));
  EXPECT_TRUE(quota.take(40));
  EXPECT_FALSE(quota.take(1));
  quota.give_back(1);
  EXPECT_TRUE(quota.take(1));
  EXPECT_FALSE(Quota(0).take(1));
}

TEST(Quota, GetsBackWhatAHolderHad) {
  Quota quota(100);
  {
    Share share(quota);
    EXPECT_TRUE(share.resize(80));
    EXPECT_FALSE(share.resize(101));
    EXPECT_EQ(80u, quota.taken());
    EXPECT_TRUE(share.resize(30));
    const Share moved(std::move(share));
    EXPECT_EQ(30u, quota.taken());
  }
  EXPECT_EQ(0u, quota.taken());
}

TEST(SpoolFile, HasNoNameAndKeepsItsBytes) {
  const test::TemporaryFolder folder;
  zelto::Spool spool({.file_bytes = 100, .folder = folder.path()});
  zelto::SpoolFile file(spool);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_TRUE(file.append("abc"));
  EXPECT_TRUE(file.append("defg"));
  EXPECT_EQ(7u, file.size());
  std::string read(7, ' ');
  file.read(read.data(), read.size());
  EXPECT_EQ("abcdefg", read);
}

TEST(SpoolFile, TakesNoMoreThanAllFilesMay) {
  const test::TemporaryFolder folder;
  zelto::Spool spool({.file_bytes = 10, .folder = folder.path()});
  {
    zelto::SpoolFile file(spool);
    EXPECT_TRUE(file.append("01234567"));
    EXPECT_FALSE(file.append("890"));
    EXPECT_EQ(std::errc(EDQUOT), file.failure("task").code());
    EXPECT_STREQ("task: no room is left of spool_limit: Disk quota exceeded", file.failure("task").what());
    EXPECT_EQ(8u, file.size());
    file.shrink(3);
    EXPECT_EQ(3u, spool.files.taken());
    EXPECT_TRUE(file.append("3456789"));
    std::string read(10, ' ');
    file.read(read.data(), read.size());
    EXPECT_EQ("0123456789", read);
  }
  EXPECT_EQ(0u, spool.files.taken());
}

TEST(SpoolFile, SaysThatItsFolderIsMissing) {
  zelto::Spool spool({.folder = "/none/of/these"});
  try {
    const zelto::SpoolFile file(spool);
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_STREQ("making a file in /none/of/these: No such file or directory", error.what());
  }
}

}  // namespace
