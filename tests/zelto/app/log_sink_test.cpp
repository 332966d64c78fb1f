#include "app/log_sink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spdlog/logger.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

#include "base/file_descriptor.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

class LogSink : public testing::Test {
 protected:
  const test::TemporaryFolder folder;
  const std::string file = folder.path("host.log").string();
  const std::shared_ptr<zelto::LogSink> sink = std::make_shared<zelto::LogSink>();
  spdlog::logger log{"test", sink};
};

TEST_F(LogSink, WritesTheMessageAndNothingElse) {
  sink->open(file);
  log.info("zelto: {} of {}", 1, "two");
  log.info(std::string_view("braces {} stay"));
  log.info(std::string());
  EXPECT_EQ("zelto: 1 of two\nbraces {} stay\n\n", folder.read("host.log"));
}

TEST_F(LogSink, WritesOneLineForEachMessage) {
  sink->open(file);
  log.info(
      "a\nb\xC2\x85"
      "c\xE2\x80\xA8"
      "d");
  EXPECT_EQ("a b c d\n", folder.read("host.log"));
}

TEST_F(LogSink, KeepsWhatIsInItsFileAndHidesItFromStrangers) {
  folder.write("host.log", "before\n");
  sink->open(file);
  log.info("after");
  EXPECT_EQ("before\nafter\n", folder.read("host.log"));
  const std::string made = folder.path("made.log").string();
  sink->open(made);
  EXPECT_EQ(fs::perms::none, fs::status(made).permissions() & fs::perms::others_all);
}

TEST_F(LogSink, OpensItsFileAnewOnceItWasRenamed) {
  sink->open(file);
  log.info("old");
  fs::rename(file, folder.path("kept.log"));
  log.info("still old");
  sink->open(file);
  log.info("new");
  EXPECT_EQ("old\nstill old\n", folder.read("kept.log"));
  EXPECT_EQ("new\n", folder.read("host.log"));
}

TEST_F(LogSink, GoesOnWhereItWasWhenAFileCannotBeOpened) {
  sink->open(file);
  EXPECT_THROW(sink->open(folder.path("none/host.log").string()), std::system_error);
  log.info("here");
  EXPECT_EQ("here\n", folder.read("host.log"));
}

TEST_F(LogSink, WritesToStandardErrorWithoutAFile) {
  sink->open(file);
  testing::internal::CaptureStderr();
  sink->open("");
  log.info("to all");
  EXPECT_EQ("to all\n", testing::internal::GetCapturedStderr());
}

// A full disk is nothing that a page has to do with.
TEST_F(LogSink, OutlivesAFileThatTakesNothing) {
  testing::internal::CaptureStderr();
  sink->open("/dev/full");
  log.info("lost");
  sink->open(file);
  log.info("kept");
  log.info("too");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("zelto: 1 line of the log lost: No space left on device\nkept\ntoo\n", folder.read("host.log"));
}

// A file that may not grow takes a part of a line; once it may, the next one begins at its beginning.
TEST_F(LogSink, WritesManyLinesAtOnceAndCountsThoseThatAreLost) {
  sink->open("/dev/full");
  sink->write_lines("a\nb\n", 2);
  sink->open(file);
  sink->write_lines("c\nd\n", 2);
  EXPECT_EQ("zelto: 2 lines of the log lost: No space left on device\nc\nd\n", folder.read("host.log"));
}

TEST_F(LogSink, GoesOnInAFileThatWasFull) {
  sink->open(file);
  log.info("before");
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit unlimited{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &unlimited));
  rlimit low = unlimited;
  low.rlim_cur = 10;
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &low));
  for (int i = 0; i < 3; ++i) log.info("too long");
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &unlimited));
  log.info("after");
  EXPECT_EQ("before\ntoo\nzelto: 3 lines of the log lost: File too large\nafter\n", folder.read("host.log"));
}

// What is at hand to be read, within ten seconds.
std::string read_some(int number) {
  pollfd asked{number, POLLIN, 0};
  std::array<char, 65536> room{};
  if (::poll(&asked, 1, 10'000) <= 0) return "nothing came";
  const ssize_t count = ::read(number, room.data(), room.size());
  return {room.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

// Reads lines until one is the last.
std::vector<std::string> read_until(int number, const std::string& last) {
  std::string text;
  while (!text.ends_with(last + "\n")) {
    const std::string more = read_some(number);
    text += more;
    if (more.empty() || more == "nothing came") break;
  }
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Standard error is, while this lives, what somebody else reads at the other end.
class StandardError {
 public:
  enum class Kind { pipe, socket };

  explicit StandardError(Kind kind) : before_(::dup(STDERR_FILENO)) {
    std::array<int, 2> ends{};
    if (kind == Kind::pipe) {
      EXPECT_EQ(0, ::pipe(ends.data()));
    } else {
      EXPECT_EQ(0, ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()));
    }
    out_ = base::FileDescriptor(ends[0]);
    const base::FileDescriptor in(ends[1]);
    EXPECT_EQ(STDERR_FILENO, ::dup2(in.get(), STDERR_FILENO));
  }
  ~StandardError() { ::dup2(before_.get(), STDERR_FILENO); }
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;

  int reader() const { return out_.get(); }
  bool waits() const { return (::fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK) == 0; }

 private:
  const base::FileDescriptor before_;
  base::FileDescriptor out_;
};

class UnreadLog : public testing::TestWithParam<StandardError::Kind> {
 protected:
  // More than what a pipe, a socket and the sink itself have room for.
  static constexpr int kLines = 3000;
  static std::string line(int number) { return std::to_string(number) + " " + std::string(995, 'x'); }

  // Beside the lines that came whole and in their order, those that were told to be lost.
  static void expect_all(const std::vector<std::string>& lines, int& told) {
    int next = 0;
    told = 0;
    for (const std::string& got : lines) {
      int lost = 0;
      if (std::sscanf(got.c_str(), "zelto: %d line", &lost) == 1) {
        EXPECT_THAT(got, testing::HasSubstr(" of the log lost: nobody read them"));
        told += lost;
        next += lost;
      } else if (got != "the last") {
        ASSERT_EQ(line(next++), got);
      }
    }
    EXPECT_EQ(kLines, next);
  }

  const StandardError standard_error{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Log, UnreadLog, testing::Values(StandardError::Kind::pipe, StandardError::Kind::socket));

TEST_P(UnreadLog, KeepsSomeLinesAndNobodyWaiting) {
  zelto::LogSink::WhenFull full = zelto::LogSink::WhenFull::keep;
  const auto sink = std::make_shared<zelto::LogSink>(full);
  spdlog::logger log{"test", sink};
  for (int i = 0; i < kLines; ++i) log.info(line(i));
  EXPECT_TRUE(standard_error.waits()) << "others write there too";
  std::vector<std::string> lines = read_until(standard_error.reader(), "nobody read them");
  log.info("the last");
  for (std::string& more : read_until(standard_error.reader(), "the last")) lines.push_back(std::move(more));
  int told = 0;
  expect_all(lines, told);
  EXPECT_GT(told, 0);
  EXPECT_LT(told, kLines - 1000) << "a mebibyte is kept";
}

TEST_P(UnreadLog, LosesLinesForWhoeverHasNoThread) {
  const auto sink = std::make_shared<zelto::LogSink>(zelto::LogSink::WhenFull::lose);
  spdlog::logger log{"test", sink};
  for (int i = 0; i < kLines; ++i) log.info(line(i));
  std::string read;
  pollfd asked{standard_error.reader(), POLLIN, 0};
  while (::poll(&asked, 1, 0) > 0) read += read_some(standard_error.reader());
  log.info("the last");
  read += read_some(standard_error.reader());
  // A line may have been begun.
  std::istringstream in(read);
  int count = 0;
  int lost = 0;  // as told: where there is no room for a line, there may be some for telling so
  for (std::string got; std::getline(in, got);) {
    int told = 0;
    if (std::sscanf(got.c_str(), "zelto: %d line", &told) == 1 || got == "the last") {
      lost += told;
      continue;
    }
    EXPECT_EQ(line(count), got + std::string(line(count).size() - std::min(line(count).size(), got.size()), 'x'));
    ++count;
  }
  EXPECT_TRUE(read.ends_with("\nthe last\n"));
  EXPECT_GT(lost, kLines / 2);
  EXPECT_TRUE(count + lost == kLines || count + lost == kLines + 1) << count << " and " << lost;
}

TEST_P(UnreadLog, WaitsForWhoeverWantsToWait) {
  zelto::LogSink::WhenFull full = zelto::LogSink::WhenFull::wait;
  const auto sink = std::make_shared<zelto::LogSink>(full);
  spdlog::logger log{"test", sink};
  std::jthread writer([&] {
    for (int i = 0; i < kLines; ++i) log.info(line(i));
    log.info("the last");
  });
  int told = 0;
  expect_all(read_until(standard_error.reader(), "the last"), told);
  EXPECT_EQ(0, told);
}

TEST_F(LogSink, KeepsLinesOfManyThreadsWhole) {
  sink->open(file);
  std::vector<std::thread> writers;
  for (int w = 0; w < 4; ++w) {
    writers.emplace_back([this, w] {
      for (int i = 0; i < 100; ++i) log.info(std::string(1000, static_cast<char>('a' + w)));
    });
  }
  for (std::thread& writer : writers) writer.join();
  std::istringstream lines(folder.read("host.log"));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count)
    EXPECT_EQ(1000, std::ranges::count(line, line.empty() ? ' ' : line.front()));
  EXPECT_EQ(400, count);
}

}  // namespace
