#include "http/access_log.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

AccessRecord example() {
  AccessRecord record;
  record.remote_address = "127.0.0.1";
  record.request_line = "GET / HTTP/1.1";
  record.status = 200;
  record.body_bytes = 512;
  record.received = std::chrono::system_clock::from_time_t(784111777);
  record.taken = std::chrono::microseconds(1234567);
  return record;
}

std::string combined_line(const AccessRecord& record) {
  std::string line;
  append_combined_line(line, record);
  return line;
}

TEST(AccessLog, WritesTheCombinedFormAndTheTime) {
  AccessRecord record = example();
  EXPECT_EQ(R"(127.0.0.1 - - [06/Nov/1994:08:49:37 +0000] "GET / HTTP/1.1" 200 512 "-" "-" 1.235)",
            combined_line(record));
  record.referer = "http://a/";
  record.user_agent = "b";
  record.note = "c d";
  EXPECT_EQ(R"(127.0.0.1 - - [06/Nov/1994:08:49:37 +0000] "GET / HTTP/1.1" 200 512 "http://a/" "b" 1.235 c d)",
            combined_line(record));
}

TEST(AccessLog, KeepsOneLineWhateverTheClientSends) {
  AccessRecord record = example();
  record.request_line = "GET /\" \n\x7F\\\xC3\xA4\x9B";
  record.note = "a\r\nb\xC3\xA4";
  EXPECT_EQ(
      "127.0.0.1 - - [06/Nov/1994:08:49:37 +0000] \"GET /\\x22 \\x0A\\x7F\\x5C\\xC3\\xA4\\x9B\" 200 512 \"-\" "
      "\"-\" 1.235 "
      "a\\x0D\\x0Ab\xC3\xA4",
      combined_line(record));
  record.request_line = "-";
  record.note = "a\xC2\x85\xC2\xA0\xE2\x80\xA8\xE2\x80\xAA";
  EXPECT_EQ(
      "127.0.0.1 - - [06/Nov/1994:08:49:37 +0000] \"-\" 200 512 \"-\" \"-\" 1.235 "
      "a\\xC2\\x85\xC2\xA0\\xE2\\x80\\xA8\xE2\x80\xAA",
      combined_line(record));
}

}  // namespace
}  // namespace zelto
