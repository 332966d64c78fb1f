#include "http/answer_queue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_folder.h"

namespace {

using zelto::AnswerQueue;
using Progress = AnswerQueue::Progress;

constexpr std::chrono::minutes kPatience(1);

// Two ends of a connection whose client reads only when the test does.
class AnswerQueueTest : public ::testing::Test {
 protected:
  AnswerQueueTest() {
    EXPECT_EQ(0, ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()));
    const int small = 4096;
    ::setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
  }
  ~AnswerQueueTest() override {
    for (const int end : ends) ::close(end);
  }

  std::string read_some() {
    std::array<char, 65536> buffer{};
    const ssize_t count = ::recv(ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  // Sends and reads by turns until so many bytes have come.
  std::string read_all(AnswerQueue& queue, std::size_t size) {
    std::string read;
    while (read.size() < size && !queue.failed()) {
      queue.send();
      read += read_some();
    }
    return read;
  }
  static zelto::SharedFile opened(const std::string& path) {
    return std::make_shared<const base::FileDescriptor>(::open(path.c_str(), O_RDONLY));
  }
  static std::string pattern(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; bytes.size() < size; ++i) bytes += std::to_string(i) + ",";
    bytes.resize(size);
    return bytes;
  }

  std::array<int, 2> ends{};
  test::TemporaryFolder folder;
  zelto::Spool spool{{.memory_bytes = 200'000, .file_bytes = 160'000'000, .folder = folder.path()}};
  int called = 0;
};

TEST_F(AnswerQueueTest, SendsAtOnceWhatIsTaken) {
  AnswerQueue queue(spool, 100'000, [this] { ++called; });
  queue.begin(ends[0], kPatience);
  queue.write("head ", "body");
  EXPECT_EQ("head body", read_some());
  EXPECT_FALSE(queue.is_sending());
  EXPECT_EQ(0, called);
}

TEST_F(AnswerQueueTest, HoldsAnEndUntilItIsReleased) {
  bool may_hold = true;
  AnswerQueue queue(
      spool, 100'000, [this] { ++called; }, [&] { return may_hold; });
  queue.begin(ends[0], kPatience);
  queue.write("part ");
  EXPECT_EQ("part ", read_some());
  queue.write_last("end");
  EXPECT_TRUE(queue.is_held());
  EXPECT_EQ("", read_some());
  queue.release();
  EXPECT_FALSE(queue.is_held());
  EXPECT_EQ("end", read_some());
  queue.release();
  EXPECT_EQ("", read_some()) << "it is sent once";
  may_hold = false;
  queue.begin(ends[0], kPatience);
  queue.write_last("another end");
  EXPECT_FALSE(queue.is_held());
  EXPECT_EQ("another end", read_some());
  EXPECT_EQ(0, called);
}

TEST_F(AnswerQueueTest, HoldsNothingBehindWhatWaits) {
  AnswerQueue queue(
      spool, 100'000, [this] { ++called; }, [] { return true; });
  queue.begin(ends[0], kPatience);
  const std::string much = pattern(20'000);
  queue.write(much);
  queue.write_last("end");
  EXPECT_FALSE(queue.is_held());
  EXPECT_EQ(much + "end", read_all(queue, much.size() + 3));
}

TEST_F(AnswerQueueTest, KeepsWhatOfAReleasedEndIsNotTaken) {
  AnswerQueue queue(
      spool, 100'000, [this] { ++called; }, [] { return true; });
  queue.begin(ends[0], kPatience);
  const std::string much = pattern(60'000);
  queue.write_last(much);
  EXPECT_EQ(0, called);
  queue.release();
  EXPECT_EQ(1, called);
  EXPECT_TRUE(queue.is_sending());
  EXPECT_EQ(much, read_all(queue, much.size()));
}

TEST_F(AnswerQueueTest, SendsNothingOfAHeldEndThatFails) {
  AnswerQueue queue(
      spool, 100'000, [this] { ++called; }, [] { return true; });
  queue.begin(ends[0], kPatience);
  queue.write_last("end");
  queue.fail();
  queue.release();
  EXPECT_EQ("", read_some());
}

TEST_F(AnswerQueueTest, KeepsTheRestInMemoryAndBeyondThatInAFile) {
  AnswerQueue queue(spool, 100'000, [this] { ++called; });
  queue.begin(ends[0], kPatience);
  const std::string all = pattern(3'000'000);
  queue.write(all.substr(0, 50'000));
  EXPECT_LT(0u, spool.memory.taken());
  EXPECT_EQ(0u, spool.files.taken());
  for (std::size_t at = 50'000; at < all.size(); at += 10'000) queue.write(all.substr(at, 10'000));
  EXPECT_GE(100'000u, spool.memory.taken());
  EXPECT_LT(2'800'000u, spool.files.taken());
  EXPECT_EQ(1, called) << "once, as long as something waits";
  EXPECT_EQ(all, read_all(queue, all.size()));
  EXPECT_EQ(Progress::sent, queue.send());
  EXPECT_EQ(0u, spool.memory.taken());
  EXPECT_EQ(0u, spool.files.taken());
  queue.write("more");
  EXPECT_EQ("more", read_some());
}

TEST_F(AnswerQueueTest, SendsAFileBehindWhatWasWritten) {
  const std::string file = folder.write("file", "0123456789");
  AnswerQueue queue(spool, 100'000, [this] { ++called; });
  queue.begin(ends[0], kPatience);
  const std::string all = pattern(60'000);
  queue.write(all);
  queue.write_file(opened(file), 2, 5);
  EXPECT_EQ(all + "23456", read_all(queue, all.size() + 5));
  EXPECT_EQ(Progress::sent, queue.send());
}

TEST_F(AnswerQueueTest, FailsWhenItsFileHasBecomeShorter) {
  const std::string file = folder.write("file", "0123456789");
  AnswerQueue queue(spool, 100'000, [] {});
  queue.begin(ends[0], kPatience);
  queue.write_file(opened(file), 0, 20);
  EXPECT_EQ(Progress::failed, queue.send());
  EXPECT_TRUE(queue.failed());
}

// Others have taken all room, and the writer is slower for it; nothing is lost.
TEST_F(AnswerQueueTest, HasItsWriterWaitWhenNothingCanBeKept) {
  zelto::Spool full({.memory_bytes = 0, .file_bytes = 0, .folder = folder.path()});
  std::atomic<int> wanted = 0;
  AnswerQueue queue(full, 100'000, [&] { ++wanted; });
  queue.begin(ends[0], kPatience);
  const std::string all = pattern(1'000'000);
  std::thread writer(
      [&] { queue.write(std::string_view(all).substr(0, 300'000), std::string_view(all).substr(300'000)); });
  EXPECT_EQ(all, read_all(queue, all.size()));
  writer.join();
  EXPECT_LT(0, wanted);
}

TEST_F(AnswerQueueTest, KeepsASmallAnswerInAnyCase) {
  zelto::Spool full({.memory_bytes = 0, .file_bytes = 0, .folder = folder.path()});
  AnswerQueue queue(full, 0, [] {});
  queue.begin(ends[0], kPatience);
  // More than the socket takes, in one thread: waiting would be for good.
  std::string filler;
  while (::send(ends[0], "0123456789", 10, MSG_DONTWAIT) > 0) filler += "0123456789";
  queue.write("small");
  EXPECT_EQ(filler + "small", read_all(queue, filler.size() + 5));
}

TEST_F(AnswerQueueTest, LetsItsWriterGoWhenTheClientHasGone) {
  zelto::Spool full({.memory_bytes = 0, .file_bytes = 0, .folder = folder.path()});
  std::atomic<bool> waits = false;
  AnswerQueue queue(full, 0, [&] {
    waits = true;
    waits.notify_one();
  });
  queue.begin(ends[0], kPatience);
  std::thread writer([&] { queue.write(pattern(1'000'000)); });
  waits.wait(false);
  queue.fail();
  writer.join();
  EXPECT_TRUE(queue.failed());
  queue.begin(ends[0], kPatience);
  EXPECT_FALSE(queue.failed());
}

TEST_F(AnswerQueueTest, FailsAClientThatDoesNotTakeItInTime) {
  zelto::Spool full({.memory_bytes = 0, .file_bytes = 0, .folder = folder.path()});
  AnswerQueue queue(full, 0, [] {});
  queue.begin(ends[0], std::chrono::milliseconds(20));
  queue.write(pattern(1'000'000));
  EXPECT_TRUE(queue.failed());
}

// As the thread that writes it would have to send it.
TEST_F(AnswerQueueTest, KeepsAllOfAnAnswerWhoseWriterMustNotWait) {
  zelto::Spool full({.memory_bytes = 0, .file_bytes = 0, .folder = folder.path()});
  AnswerQueue queue(full, 0, [] {});
  queue.begin(ends[0], std::chrono::milliseconds(0));
  const std::string all = pattern(1'000'000);
  queue.write(all);
  EXPECT_EQ(all, read_all(queue, all.size()));
}

TEST_F(AnswerQueueTest, TakesMoreMemoryWhenThereIsNoFileAndSaysSoOnce) {
  std::vector<std::string> told;
  zelto::Spool nowhere({.memory_bytes = 3'000'000, .folder = "/none/of/these"},
                       [&](std::string_view problem) { told.emplace_back(problem); });
  AnswerQueue queue(nowhere, 100'000, [] {});
  queue.begin(ends[0], kPatience);
  const std::string all = pattern(2'000'000);
  for (std::size_t at = 0; at < all.size(); at += 10'000) queue.write(all.substr(at, 10'000));
  EXPECT_EQ(std::vector<std::string>{"making a file in /none/of/these: No such file or directory"}, told);
  EXPECT_EQ(all, read_all(queue, all.size()));
}

TEST_F(AnswerQueueTest, LeavesRoomInFilesForOthers) {
  zelto::Spool small({.memory_bytes = 0, .file_bytes = 8'000'000, .folder = folder.path()});
  AnswerQueue queue(small, 0, [] {});
  queue.begin(ends[0], std::chrono::milliseconds(20));
  for (int i = 0; i < 100; ++i) queue.write(pattern(10'000));
  EXPECT_TRUE(queue.failed());
  queue.begin(ends[0], kPatience);
  for (int i = 0; i < 40; ++i) queue.write(pattern(10'000));
  EXPECT_FALSE(queue.failed());
  EXPECT_GE(500'000u, small.files.taken());
}

TEST_F(AnswerQueueTest, TellsWhatHasArrivedNotWhatWasSent) {
  AnswerQueue queue(spool, 100'000, [] {});
  queue.begin(ends[0], kPatience);
  queue.write(pattern(80'000));
  EXPECT_EQ(0u, queue.delivered());
  const std::size_t read = read_some().size();
  EXPECT_LT(0u, read);
  EXPECT_LT(0u, queue.delivered());
  EXPECT_GE(read, queue.delivered());
}

// A client that still takes the first of two answers is not one that takes nothing.
TEST_F(AnswerQueueTest, CountsWhatArrivesOfTheAnswerBefore) {
  AnswerQueue queue(spool, 100'000, [] {});
  queue.begin(ends[0], kPatience);
  queue.write(pattern(1000));
  queue.begin(ends[0], kPatience);
  const auto before = queue.delivered();
  EXPECT_EQ(1000u, read_some().size());
  EXPECT_LT(before, queue.delivered());
}

}  // namespace
