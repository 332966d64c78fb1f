#include "app/log_sink.h"

#include <gtest/gtest.h>
#include <spdlog/logger.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

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
  sink->open("");
  testing::internal::CaptureStderr();
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
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("kept\n", folder.read("host.log"));
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
