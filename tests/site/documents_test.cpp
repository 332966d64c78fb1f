// The pages in the documents, and what the documents say that they print.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

struct Example {
  std::string page;
  std::string output;
  int line = 0;  // of the document, where the page begins
};

// Every block of ```asp, with the block of ```text after it.
std::vector<Example> examples_in(const fs::path& document) {
  std::vector<Example> examples;
  std::string* block = nullptr;
  std::ifstream in(document);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line == "```asp") {
      examples.push_back({.page = {}, .output = {}, .line = number + 1});
      block = &examples.back().page;
    } else if (line == "```text" && !examples.empty()) {
      block = &examples.back().output;
    } else if (line == "```") {
      block = nullptr;
    } else if (block) {
      *block += line + "\n";
    }
  }
  return examples;
}

std::string without_end(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

TEST(Documents, ShowPagesWithWhatTheyPrint) {
  const test::TemporaryFolder folder;
  const std::vector<Example> examples = examples_in(fs::path(DOCUMENTS) / "pages.md");
  EXPECT_GE(examples.size(), 4U);
  for (const Example& example : examples) {
    folder.write("page.asp", example.page);
    const test::Ran ran = test::run_program({"run", "page.asp"}, folder.path(), folder.path());
    EXPECT_EQ(without_end(example.output), without_end(ran.output)) << "pages.md:" << example.line;
    EXPECT_EQ("", ran.error) << "pages.md:" << example.line;
  }
}

}  // namespace
