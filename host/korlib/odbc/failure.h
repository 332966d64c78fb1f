// What a database, its driver or the driver manager says when it refuses.
#pragma once

#include <exception>
#include <string>
#include <vector>

namespace korlib::odbc {

struct Diagnostic {
  std::wstring state;  // SQLSTATE, five characters
  int native = 0;      // the database's own code
  std::wstring text;
  bool is_from_driver = false;  // otherwise this room's own words
};

// Thrown by everything in this room that talks to a driver. There is at least one diagnostic.
class Failure : public std::exception {
 public:
  explicit Failure(std::vector<Diagnostic> diagnostics);
  Failure(std::wstring state, std::wstring text) : Failure({{std::move(state), 0, std::move(text)}}) {}

  const std::vector<Diagnostic>& diagnostics() const { return diagnostics_; }
  bool has_timed_out() const { return diagnostics_.front().state.starts_with(L"HYT"); }
  bool is_connection_lost() const;
  std::wstring text() const;  // one line a diagnostic; the driver's with their SQLSTATE and native code
  const char* what() const noexcept override { return "the database refused"; }

 private:
  std::vector<Diagnostic> diagnostics_;
};

}  // namespace korlib::odbc
