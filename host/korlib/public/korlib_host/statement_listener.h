// The statements that a thread gives to databases, for a host that shows an author what his page has done.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace korlib_host {

class StatementListener {
 public:
  // One has run, or failed, in that time: until its first row could be read.
  virtual void on_statement(std::wstring_view sql, std::chrono::steady_clock::duration took) noexcept = 0;
  // The database has refused one: with what it had for its parameters, as text ('in quotes' where that is what it is,
  // and without the end of a long one), and what the script is told.
  virtual void on_refused(std::wstring_view sql, const std::vector<std::wstring>& parameters,
                          std::wstring_view error) noexcept = 0;

 protected:
  ~StatementListener() = default;
};

// That of the calling thread, which outlives its use; null, as at first, for none.
[[gnu::visibility("default")]] void set_statement_listener(StatementListener* listener) noexcept;
[[gnu::visibility("default")]] StatementListener* statement_listener() noexcept;

}  // namespace korlib_host
