#include "app/open_file_limit.h"

#include <gtest/gtest.h>

namespace {

// 1,024 are for pages, and each connection may have two.
TEST(OpenFileLimit, LeavesFilesForPages) {
  EXPECT_EQ(4096u, zelto::connections_that_fit(20'000, 4096));
  EXPECT_EQ(4096u, zelto::connections_that_fit(9216, 4096));
  EXPECT_EQ(4095u, zelto::connections_that_fit(9215, 4096));
  EXPECT_EQ(512u, zelto::connections_that_fit(2048, 4096));
  EXPECT_EQ(10u, zelto::connections_that_fit(100, 10));
}

TEST(OpenFileLimit, HalvesTooFewFiles) {
  EXPECT_EQ(25u, zelto::connections_that_fit(100, 4096));
  EXPECT_EQ(1u, zelto::connections_that_fit(2, 4096));
}

}  // namespace
