// What a database says when it refuses.
#pragma once

#include <exception>
#include <string>
#include <vector>

#include "odbc/driver_text.h"

namespace korlib::odbc {

struct Diagnostic {
  std::wstring state;  // SQLSTATE, five characters
  int native = 0;
  std::wstring text;  // the driver's
  bool is_from_driver = false;
};

// Thrown by everything in this folder that talks to a driver.
class Failure : public std::exception {
 public:
  explicit Failure(std::vector<Diagnostic> diagnostics, bool has_timed_out = false);

  const std::vector<Diagnostic>& diagnostics() const { return diagnostics_; }
  bool has_timed_out() const { return has_timed_out_; }
  bool is_connection_lost() const;
  std::wstring text() const;  // one line a diagnostic; the driver's with their SQLSTATE and native code
  // The code that scripts know this kind of failure by.
  std::int32_t code() const;
  const char* what() const noexcept override { return "the database refused"; }

 private:
  std::vector<Diagnostic> diagnostics_;
  bool has_timed_out_;
};

// The diagnostics of an ODBC handle.
std::vector<Diagnostic> diagnostics_of(DriverText way, short handle_type, void* handle);

// Throws when an ODBC call has failed.
void check(short result, DriverText way, short handle_type, void* handle);

}  // namespace korlib::odbc
