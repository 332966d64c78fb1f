// Every folder of cases/ is a test: `zelto run` of its page, and what must come of it.
//
//   page.asp      the page that is run; everything else in the folder is there for it
//   arguments     further arguments of `zelto run`, one a line (optional); the case's folder is the current one
//   output        standard output, to the byte (optional: not looked at when missing)
//   error         text that standard error must hold, one piece a line (optional: must be empty when missing)
//   status        the exit code (optional, 0)
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::optional<std::string> read(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<std::string> lines_of(const fs::path& file) {
  std::vector<std::string> lines;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

struct Ran {
  int status = -1;
  std::string output;
  std::string error;
};

// Runs the program in the case's folder with its streams in files of `scratch`.
Ran run(const fs::path& folder, const std::vector<std::string>& arguments, const fs::path& scratch) {
  const fs::path out = scratch / "output";
  const fs::path err = scratch / "error";
  std::vector<std::string> words{ZELTO_PROGRAM, "run", "page.asp"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const bool ready = chdir(folder.c_str()) == 0 && std::freopen(out.c_str(), "wb", stdout) &&
                       std::freopen(err.c_str(), "wb", stderr) && std::freopen("/dev/null", "rb", stdin) &&
                       setenv("ZELTO_REGISTRY", (scratch / "registry.json").c_str(), 1) == 0;
    if (ready) execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(out).value_or(""),
          read(err).value_or("")};
}

class Case : public testing::Test {
 public:
  explicit Case(fs::path folder) : folder_(std::move(folder)) {
    std::string name = (fs::temp_directory_path() / "zelto-site-XXXXXX").string();
    scratch_ = mkdtemp(name.data());
  }
  ~Case() override { fs::remove_all(scratch_); }

  void TestBody() override {
    const Ran ran = run(folder_, lines_of(folder_ / "arguments"), scratch_);
    const int status = std::stoi(read(folder_ / "status").value_or("0"));
    EXPECT_EQ(ran.status, status) << ran.error;
    if (const auto output = read(folder_ / "output")) {
      EXPECT_EQ(ran.output, *output);
    }
    const auto pieces = lines_of(folder_ / "error");
    if (pieces.empty()) {
      EXPECT_EQ(ran.error, "");
    }
    for (const std::string& piece : pieces) EXPECT_NE(ran.error.find(piece), std::string::npos) << ran.error;
  }

 private:
  fs::path folder_;
  fs::path scratch_;
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
