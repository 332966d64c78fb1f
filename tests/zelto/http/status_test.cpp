#include "http/status.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(Status, HasAStandardReason) {
  EXPECT_EQ("Not Found", reason_of(404));
  EXPECT_EQ("Service Unavailable", reason_of(503));
  EXPECT_EQ("Content Too Large", reason_of(413));
  EXPECT_EQ("Unprocessable Content", reason_of(422));
  EXPECT_EQ("Unknown", reason_of(299));
  EXPECT_EQ("414 URI Too Long", status_line(414));
}

TEST(Status, TellsWhichAnswersHaveNoBody) {
  for (const int bodiless : {100, 101, 204, 205, 304}) EXPECT_TRUE(is_bodiless(bodiless)) << bodiless;
  for (const int other : {200, 206, 301, 404, 500}) EXPECT_FALSE(is_bodiless(other)) << other;
}

}  // namespace
}  // namespace zelto
