// Every folder of cases/ is a test: `zelto run` of its page in a copy of it, and what must come of it.
//
//   page.asp      the page that is run; everything else in the folder is there for it
//   arguments     further arguments of `zelto run`, one a line (optional); the copy is the current folder
//   output        standard output, to the byte (optional: not looked at when missing)
//   output_begins what standard output begins with, to the byte (optional): what follows differs each time
//   error         text that standard error must hold, one piece a line (optional: must be empty when missing)
//   status        the exit code (optional, 0)
//   once          is there where the page cannot be asked for again: it leaves something that it finds the next time
//
// Each is asked for once, and four times by the same program: the last answer is as the first.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using test::read;

std::vector<std::string> lines_of(const fs::path& file) {
  std::vector<std::string> lines;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

class Case : public testing::Test {
 public:
  explicit Case(fs::path folder) : folder_(std::move(folder)) {}

  void TestBody() override {
    run({});
    if (!fs::exists(folder_ / "once")) run({"--times", "4"});
  }

 private:
  void run(const std::vector<std::string>& how) {
    const test::TemporaryFolder scratch;
    std::vector<std::string> words{"run", "page.asp"};
    words.insert(words.end(), how.begin(), how.end());
    for (const std::string& word : lines_of(folder_ / "arguments")) words.push_back(word);
    fs::copy(folder_, scratch.path("case"), fs::copy_options::recursive);
    // A page that has just been changed is read anew each time, and is another one then.
    for (const auto& entry : fs::recursive_directory_iterator(scratch.path("case"))) {
      if (entry.is_regular_file())
        fs::last_write_time(entry, fs::file_time_type::clock::now() - std::chrono::minutes(1));
    }
    const test::Ran ran = test::run_program(words, scratch.path("case"), scratch.path());
    const int status = std::stoi(read(folder_ / "status").value_or("0"));
    EXPECT_EQ(status, ran.status) << ran.error;
    if (const auto output = read(folder_ / "output")) {
      EXPECT_EQ(*output, ran.output);
    }
    if (const auto beginning = read(folder_ / "output_begins")) {
      EXPECT_EQ(*beginning, ran.output.substr(0, beginning->size()));
    }
    const auto pieces = lines_of(folder_ / "error");
    if (pieces.empty()) {
      EXPECT_EQ("", ran.error);
    }
    for (const std::string& piece : pieces) EXPECT_NE(std::string::npos, ran.error.find(piece)) << ran.error;
  }

  fs::path folder_;
};

// Tests are named after their folders: "upload_two_files" is Site.upload_two_files.
void add_cases() {
  std::vector<fs::path> folders;
  for (const auto& entry : fs::directory_iterator(SITE_CASES)) {
    if (entry.is_directory()) folders.push_back(entry.path());
  }
  std::sort(folders.begin(), folders.end());
  for (const fs::path& folder : folders) {
    testing::RegisterTest("Site", folder.filename().c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [folder]() -> testing::Test* { return new Case(folder); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  add_cases();
  return RUN_ALL_TESTS();
}
