// Handles of the driver manager: environments, connections, statements.
#pragma once

#include <cstdint>

#include "odbc/driver_text.h"
#include "odbc/failure.h"

namespace korlib::odbc {

// The numbers are the driver manager's.
enum class HandleType : std::int16_t { environment = 1, connection = 2, statement = 3 };

// Owns one handle. A connection is disconnected, and a statement ended, before it is freed.
class Handle {
 public:
  // `parent` is the environment of a connection, the connection of a statement, and none for an environment; it must
  // outlive this one. Throws Failure when the driver manager gives none.
  Handle(HandleType type, const Handle* parent, DriverText way);
  ~Handle() { free(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void* get() const { return handle_; }  // null once it is freed
  void free() noexcept;
  // Throws Failure with the handle's diagnostics when `result`, of a call with this handle, is neither success nor
  // success with information.
  void check(std::int16_t result) const;
  std::vector<Diagnostic> diagnostics() const;

 private:
  HandleType type_;
  DriverText way_;
  void* handle_ = nullptr;
};

// How many handles of that type are not freed yet, in all threads.
std::int64_t open_handles(HandleType type) noexcept;

}  // namespace korlib::odbc
