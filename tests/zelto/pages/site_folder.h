// A folder of pages that lives as long as a test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace test {

class SiteFolder : public ::testing::Test {
 protected:
  SiteFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zelto-source-XXXXXX").string();
    base_ = std::filesystem::canonical(mkdtemp(name.data()));
    root = base_ / "site";
    std::filesystem::create_directory(root);
  }
  ~SiteFolder() override { std::filesystem::remove_all(base_); }

  // "../name" lies beside the site.
  std::string write(const std::string& name, std::string_view bytes) {
    const std::filesystem::path path = std::filesystem::path(root) / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
  }
  std::string path_of(const std::string& name) const { return root + "/" + name; }

  std::string root;

 private:
  std::filesystem::path base_;
};

}  // namespace test
