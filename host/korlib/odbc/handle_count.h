// Counts driver handles while they are open; korlib_host/database.h tells the sums.
#pragma once

namespace korlib::odbc {

enum class Handle { kConnection, kStatement };

class HandleCount {
 public:
  explicit HandleCount(Handle handle) noexcept;
  ~HandleCount();
  HandleCount(const HandleCount&) = delete;
  HandleCount& operator=(const HandleCount&) = delete;

 private:
  Handle handle_;
};

}  // namespace korlib::odbc
