#include "base/file_descriptor.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "support/temporary_folder.h"

namespace {

using base::FileDescriptor;

bool is_open(int number) { return fcntl(number, F_GETFD) != -1; }

class FileDescriptorTest : public testing::Test {
 protected:
  FileDescriptor create() { return FileDescriptor(open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)); }

  test::TemporaryFolder folder_;
  std::string path_ = folder_.path("file").string();
};

TEST_F(FileDescriptorTest, ClosesTheFileWhenItGoes) {
  int number = -1;
  {
    const FileDescriptor file = create();
    ASSERT_TRUE(file);
    number = file.get();
    EXPECT_TRUE(is_open(number));
  }
  EXPECT_FALSE(is_open(number));
}

TEST_F(FileDescriptorTest, MovesAndGivesTheFileAway) {
  FileDescriptor first = create();
  const int number = first.get();
  FileDescriptor second(std::move(first));
  EXPECT_EQ(number, second.get());
  FileDescriptor third;
  EXPECT_FALSE(third);
  third = std::move(second);
  EXPECT_EQ(number, third.release());
  EXPECT_FALSE(third);
  EXPECT_TRUE(is_open(number));
  close(number);
}

TEST_F(FileDescriptorTest, SaysWhetherClosingWentWell) {
  FileDescriptor file = create();
  EXPECT_TRUE(file.close());
  EXPECT_FALSE(file);
  EXPECT_TRUE(file.close());  // there is nothing to close
  EXPECT_TRUE(FileDescriptor(-1).close());
  FileDescriptor stranger = create();
  ::close(stranger.get());
  EXPECT_FALSE(stranger.close());
  EXPECT_EQ(EBADF, errno);
}

TEST_F(FileDescriptorTest, WritesEverythingThroughAPipeThatTakesLittle) {
  const std::string bytes(1'000'000, 'x');
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  const FileDescriptor from(ends[0]);
  FileDescriptor to(ends[1]);
  const pid_t child = fork();
  if (child == 0) _exit(base::write_all(ends[1], bytes) == 0 ? 0 : 1);
  to.close();
  std::string read_back;
  char piece[4096];
  for (ssize_t count = 0; (count = read(from.get(), piece, sizeof piece)) > 0;) {
    read_back.append(piece, static_cast<std::size_t>(count));
  }
  EXPECT_EQ(bytes, read_back);
}

TEST_F(FileDescriptorTest, SaysWhyItCouldNotWrite) {
  { const FileDescriptor made = create(); }
  const FileDescriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(EBADF, base::write_all(file.get(), "x"));
  EXPECT_EQ(0, base::write_all(file.get(), ""));
}

}  // namespace
