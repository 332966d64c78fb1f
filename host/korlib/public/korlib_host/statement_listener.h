// The statements that a thread gives to databases, for a host that shows an author what his page has done.
#pragma once

#include <chrono>
#include <string_view>

namespace korlib_host {

class StatementListener {
 public:
  // One has run, or failed, in that time: until its first row could be read.
  virtual void on_statement(std::wstring_view sql, std::chrono::steady_clock::duration took) noexcept = 0;

 protected:
  ~StatementListener() = default;
};

// That of the calling thread, which outlives its use; null, as at first, for none.
[[gnu::visibility("default")]] void set_statement_listener(StatementListener* listener) noexcept;

}  // namespace korlib_host
