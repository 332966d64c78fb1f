// What a process gives back that has been started and only waits from then on.
#include "app/startup_pages.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

// In KiB, of pages that are as in a file.
long pages_of_files() {
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name; std::getline(status, name)) {
    if (name != "RssFile:") continue;
    long size = 0;
    status >> size;
    return size;
  }
  return 0;
}

TEST(StartupPages, AreGivenBack) {
  const long before = pages_of_files();
  zelto::give_startup_pages_back();
  const long after = pages_of_files();
  EXPECT_GT(after, 0);
  EXPECT_LT(after, before / 2);
}

}  // namespace
