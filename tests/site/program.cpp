#include "site/program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace test {

namespace fs = std::filesystem;

std::optional<std::string> read(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

Ran run_program(std::vector<std::string> words, const fs::path& folder, const fs::path& scratch,
                const fs::path& input) {
  const fs::path out = scratch / "output";
  const fs::path err = scratch / "error";
  words.insert(words.begin(), ZELTO_PROGRAM);
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const bool ready = chdir(folder.c_str()) == 0 && std::freopen(out.c_str(), "wb", stdout) &&
                       std::freopen(err.c_str(), "wb", stderr) && std::freopen(input.c_str(), "rb", stdin) &&
                       setenv("ZELTO_REGISTRY", (scratch / "registry.json").c_str(), 1) == 0;
    if (ready) execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(out).value_or(""),
          read(err).value_or("")};
}

}  // namespace test
