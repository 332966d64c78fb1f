// A folder of its own for a test, removed afterwards.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "korlib-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path path(const std::string& name = {}) const { return name.empty() ? path_ : path_ / name; }
  std::wstring wide(const std::string& name) const { return path(name).wstring(); }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  std::string read(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(path(name), std::ios::binary).rdbuf();
    return bytes.str();
  }

 private:
  std::filesystem::path path_;
};
