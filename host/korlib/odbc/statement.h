// One statement on a connection: run, bound, read row by row.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "odbc/column.h"
#include "odbc/connection.h"
#include "odbc/value.h"

namespace korlib::odbc {

class BoundParameter;

// Everything throws Failure.
class Statement {
 public:
  // Each run, and each row, may take that many seconds; 0 is without end.
  Statement(std::shared_ptr<Connection> connection, int timeout_seconds);
  ~Statement() { drop(); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Output parameters hold their values afterwards.
  void run(const std::wstring& sql, std::vector<Parameter>& parameters);
  // Goes to the next result of a batch; false when there is none.
  bool next_result();

  // Empty for a statement that gives no rows.
  const Columns& columns() const { return columns_; }
  // -1 for a statement that gives rows, and where the driver does not tell.
  std::int64_t affected_rows() const { return affected_; }
  // False at the end.
  bool fetch(Row& row);

  void forget() noexcept { keep_as_.clear(); }  // its handle is not run again
  void drop() noexcept;                         // frees the handle, or leaves it to the connection; what follows fails

 private:
  using Bound = std::vector<BoundParameter>;

  void need_handle() const;
  template <class Body>
  auto within_timeout(Body body);
  bool run_kept(const std::wstring& sql, const std::vector<Parameter>& parameters, Bound& bound);
  void run_fresh(const std::wstring& sql, const std::vector<Parameter>& parameters, Bound& bound, bool is_kept);
  void execute(const std::vector<Parameter>& parameters, Bound& bound);
  void check_run(std::int16_t result) const;
  void describe();

  std::shared_ptr<Connection> connection_;
  std::unique_ptr<Handle> handle_;
  bool is_dropped_ = false;
  std::wstring keep_as_;  // the text under which the connection keeps the handle; empty when it does not
  int timeout_;
  Columns columns_ = std::make_shared<const std::vector<Column>>();
  std::int64_t affected_ = -1;
};

}  // namespace korlib::odbc
