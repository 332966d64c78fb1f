// Statements that a connection keeps prepared for the next one of the same text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "odbc/column.h"
#include "odbc/handle.h"

namespace korlib::odbc {

// Whether a command text asks for rows, as far as its first word tells.
bool is_query(std::wstring_view sql);

// Whether a handle that was prepared with this text may run again: one query, which changes nothing when it fails half
// way and is run once more, and which names its columns, since the driver goes on with those that it has found first.
bool may_be_kept(std::wstring_view sql);

// Of what a statement gives, once it is run: of a column that is no table's, an expression's say, the driver takes the
// type from the first row that it meets, and goes on with that. A number of rows is one whatever there is.
bool are_columns_of_tables(const Handle& statement, std::size_t count);
bool counts_rows(std::wstring_view sql);

// Preparing a query takes SQLite twice as long as running it. The last few that were used are kept.
class KeptStatements {
 public:
  KeptStatements() = default;
  ~KeptStatements() { clear(); }
  KeptStatements(const KeptStatements&) = delete;
  KeptStatements& operator=(const KeptStatements&) = delete;

  // A handle, and the columns of what it gives, which stay the same.
  struct Prepared {
    std::unique_ptr<Handle> handle;
    Columns columns;
  };
  // Without a handle where none of that text is kept. It is the caller's from now on.
  Prepared take(std::wstring_view sql);
  // Of a statement that is over; its parameters have been reset.
  void keep(std::wstring sql, Prepared statement) noexcept;
  void clear() noexcept;

 private:
  struct Kept {
    std::wstring sql;
    Prepared statement;
  };
  std::vector<Kept> kept_;  // the last used comes last
};

// How many all connections keep, in all threads.
std::int64_t kept_statements() noexcept;

}  // namespace korlib::odbc
