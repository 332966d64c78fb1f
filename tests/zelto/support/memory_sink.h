// A response that stays in memory.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/letter_case.h"
#include "http/message.h"

namespace test {

// Keeps what it is sent.
class MemorySink final : public zelto::ResponseSink {
 public:
  void start(zelto::ResponseHead sent, std::uint64_t sent_length) override {
    head = std::move(sent);
    length = sent_length;
    ++starts;
  }
  void write(std::string_view bytes) override {
    body += bytes;
    writes.emplace_back(bytes);
  }
  void write_file(zelto::SharedFile, std::uint64_t, std::uint64_t) override { ADD_FAILURE() << "no page sends files"; }
  void finish() override { ++finishes; }
  void break_off() override { ++breaks; }
  bool connected() const override { return is_connected; }
  bool failed() const override { return has_failed; }
  void append_to_log(std::string_view text) override { log += text; }

  // The values of a header, in order.
  std::vector<std::string> header(std::string_view name) const {
    std::vector<std::string> values;
    for (const zelto::Header& sent : head.headers) {
      if (base::equal_ascii(sent.name, name)) values.push_back(sent.value);
    }
    return values;
  }

  zelto::ResponseHead head;
  std::uint64_t length = 0;
  std::string body;
  std::vector<std::string> writes;
  std::string log;
  int starts = 0;
  int finishes = 0;
  int breaks = 0;
  bool is_connected = true;
  bool has_failed = false;
};

}  // namespace test
