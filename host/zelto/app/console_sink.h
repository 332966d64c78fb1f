// The response of a page that is run from the command line.
#pragma once

#include <cstdio>

#include "http/message.h"

namespace zelto {

class ConsoleSink final : public ResponseSink {
 public:
  // `out` may be null: nothing is printed then.
  ConsoleSink(std::FILE* out, bool with_head) : out_(out), with_head_(with_head) {}

  void start(ResponseHead head, std::uint64_t length) override;
  void write(std::string_view bytes) override;
  void write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) override;
  void append_to_log(std::string_view text) override;
  void finish() override {
    if (out_) std::fflush(out_);
  }
  void break_off() override { finish(); }
  bool connected() const override { return !failed(); }
  bool failed() const override { return out_ && std::ferror(out_) != 0; }

  int status() const { return status_; }

 private:
  std::FILE* out_;
  bool with_head_;
  int status_ = 0;
};

}  // namespace zelto
