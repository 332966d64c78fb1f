#include "http/request_record.h"

#include <gtest/gtest.h>

#include <chrono>

#include "http/spool.h"

namespace {

using Clock = std::chrono::steady_clock;

void wait_for_the_clock() {
  const auto began = Clock::now();
  while (Clock::now() - began < std::chrono::microseconds(2)) continue;
}

TEST(RequestRecord, CountsTheTimeUntilItIsStoppedOrEnds) {
  zelto::Spool spool({});
  zelto::AnswerQueue queue(spool, 0, [] {});
  const zelto::SocketSink sink(queue);
  zelto::RequestRecord record;
  for (int request = 0; request < 2; ++request) {
    record.begin("192.0.2.1", "GET / HTTP/1.1");
    const auto at_first = record.end(sink).taken;
    wait_for_the_clock();
    const auto later = record.end(sink).taken;
    EXPECT_LT(at_first, later);
    record.stop();
    const auto stopped = record.end(sink).taken;
    EXPECT_LE(later, stopped);
    wait_for_the_clock();
    EXPECT_EQ(stopped, record.end(sink).taken);
  }
}

}  // namespace
