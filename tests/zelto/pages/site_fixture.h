// A folder of pages that lives as long as a test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/temporary_folder.h"

namespace test {

class SiteFolder : public ::testing::Test {
 protected:
  SiteFolder() { std::filesystem::create_directory(root); }

  // "../name" lies beside the site.
  std::string write(const std::string& name, std::string_view bytes) { return base_.write("site/" + name, bytes); }
  std::string path_of(const std::string& name) const { return root + "/" + name; }

 private:
  TemporaryFolder base_;

 protected:
  const std::string root = base_.path("site").string();
};

}  // namespace test
