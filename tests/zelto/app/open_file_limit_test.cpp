#include "app/open_file_limit.h"

#include <gtest/gtest.h>

namespace {

TEST(OpenFileLimit, LeavesFilesForPages) {
  EXPECT_EQ(4096u, zelto::connections_that_fit(20'000, 4096));
  EXPECT_EQ(4096u, zelto::connections_that_fit(5120, 4096));
  EXPECT_EQ(2559u, zelto::connections_that_fit(5119, 4096));
  EXPECT_EQ(50u, zelto::connections_that_fit(100, 4096));
  EXPECT_EQ(10u, zelto::connections_that_fit(100, 10));
}

}  // namespace
