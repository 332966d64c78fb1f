// The pages in the documents, and what the documents say that they print.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

struct Example {
  std::string source;
  std::string output;
  int line = 0;  // of the document, where the source begins
};

// Every block that begins with the line, with the block of ```text after it.
std::vector<Example> examples_in(const fs::path& document, const std::string& beginning) {
  std::vector<Example> examples;
  std::string* block = nullptr;
  std::ifstream in(document);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line == beginning) {
      examples.push_back({.source = {}, .output = {}, .line = number + 1});
      block = &examples.back().source;
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
  const std::pair<const char*, std::size_t> documents[] = {{"pages.md", 4},   {"controller.md", 2},
                                                           {"objects.md", 1}, {"databases.md", 3},
                                                           {"moving.md", 1},  {"vbscript_examples.md", 10}};
  for (const auto& [document, least] : documents) {
    const std::vector<Example> examples = examples_in(fs::path(DOCUMENTS) / document, "```asp");
    EXPECT_GE(examples.size(), least);
    for (const Example& example : examples) {
      folder.write("page.asp", example.source);
      const test::Ran ran = test::run_program({"run", "page.asp"}, folder.path(), folder.path());
      EXPECT_EQ(without_end(example.output), without_end(ran.output)) << document << ":" << example.line;
      EXPECT_EQ("", ran.error) << document << ":" << example.line;
    }
  }
}

// The templates of templates.md, drawn by the page that a document has in a block with that beginning.
void show_templates(const char* of_page, const std::string& beginning) {
  const test::TemporaryFolder folder;
  const fs::path document = fs::path(DOCUMENTS) / "templates.md";
  const std::vector<Example> pages = examples_in(fs::path(DOCUMENTS) / of_page, beginning);
  const std::vector<Example> parts = examples_in(document, "```html part");
  ASSERT_EQ(1U, pages.size());
  ASSERT_EQ(1U, parts.size());
  fs::create_directory(folder.path("templates"));
  folder.write("page.asp", pages[0].source);
  folder.write("templates/part.html", without_end(parts[0].source));
  const std::vector<Example> examples = examples_in(document, "```html");
  EXPECT_GE(examples.size(), 9U);
  for (const Example& example : examples) {
    folder.write("templates/example.html", example.source);
    const test::Ran ran =
        test::run_program({"run", "page.asp", "--query", "c=Greet&who=<Ann>"}, folder.path(), folder.path());
    EXPECT_EQ(without_end(example.output), without_end(ran.output))
        << "templates.md:" << example.line << " by the page of " << of_page;
    EXPECT_EQ("", ran.error) << "templates.md:" << example.line << " by the page of " << of_page;
  }
}

TEST(Documents, ShowTemplatesWithWhatTheyDraw) {
  show_templates("templates.md", "```asp");
  show_templates("vbscript_examples.md", "```asp marks.asp");
}

}  // namespace
