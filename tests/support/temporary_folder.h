// A folder of its own for a test, removed with everything in it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "mirt-test-XXXXXX").string();
    path_ = std::filesystem::canonical(mkdtemp(pattern.data()));
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // Canonical: no symbolic link, no slash at its end. `name` is a path below the folder.
  std::filesystem::path path() const { return path_; }
  std::filesystem::path path(const std::string& name) const { return path_ / name; }
  std::wstring wide(const std::string& name = {}) const { return (name.empty() ? path_ : path_ / name).wstring(); }

  // Makes the folders on the way as well. Answers the file's path.
  std::string write(const std::string& name, std::string_view bytes) const {
    std::filesystem::create_directories(path(name).parent_path());
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name).string();
  }
  // Empty for a file that is not there.
  std::string read(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(path(name), std::ios::binary).rdbuf();
    return bytes.str();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace test
