// Runs the program as a user does.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace test {

// The bytes of a file; nothing when it cannot be read.
std::optional<std::string> read(const std::filesystem::path& file);

struct Ran {
  int status = -1;  // 128 and the signal's number for a crash
  std::string output;
  std::string error;
};

// `zelto WORDS…` in `folder`. Its output and its registry store, registry.json, lie in `scratch`. Standard
// input comes from the file `input`.
Ran run_program(std::vector<std::string> words, const std::filesystem::path& folder,
                const std::filesystem::path& scratch, const std::filesystem::path& input = "/dev/null");

}  // namespace test
