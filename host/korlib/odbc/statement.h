// One statement on a connection: run, bound, read row by row.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbc/connection.h"
#include "odbc/failure.h"
#include "odbc/handle_count.h"
#include "odbc/value.h"

namespace korlib::odbc {

class BoundParameter;

// Everything throws Failure.
class Statement {
 public:
  Statement(std::shared_ptr<Connection> connection, int timeout_seconds);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Afterwards parameters that give something back hold it.
  void run(const std::wstring& sql, std::vector<Parameter>& parameters);
  // Goes to the next result of a batch; false when there is none.
  bool next_result();

  // Empty for a statement that gives no rows.
  const std::vector<Column>& columns() const { return columns_; }
  std::int64_t affected_rows() const { return affected_; }
  // False at the end.
  bool fetch(Row& row);

  void drop() noexcept;  // frees the handle; what follows fails
  const std::shared_ptr<Connection>& connection() const { return connection_; }

 private:
  void check(short result);
  void need_handle() const;
  void refuse_surplus(std::size_t given);
  void describe();
  Column describe_column(unsigned short number);
  std::wstring type_name(unsigned short number);
  Value read(unsigned short number, const Column& column);
  Value read_loose(unsigned short number, const Column& column);
  Value read_text(unsigned short number);
  Value read_bytes(unsigned short number);
  // False for NULL.
  template <class Unit>
  bool read_long(unsigned short number, short c_type, std::basic_string<Unit>& value);
  template <class Raw>
  bool read_fixed(unsigned short number, short c_type, Raw& raw);
  Value read_moment(unsigned short number, Kind kind);

  std::shared_ptr<Connection> connection_;
  void* handle_ = nullptr;
  std::optional<HandleCount> count_;
  int timeout_;
  std::vector<Column> columns_;
  std::int64_t affected_ = -1;
};

}  // namespace korlib::odbc
