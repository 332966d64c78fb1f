// The rows of a result, one at a time or all kept.
#pragma once

#include <memory>
#include <vector>

#include "odbc/statement.h"

namespace korlib::odbc {

// A position in a result. Forward-only results are read as they are walked through; kept ones are read
// at once, and then the position moves freely. Throws Failure.
class ResultSet {
 public:
  ResultSet(std::unique_ptr<Statement> statement, bool is_kept);

  bool has_columns() const { return !columns_->empty(); }
  const std::vector<Column>& columns() const { return *columns_; }
  std::int64_t affected_rows() const { return affected_; }
  bool is_kept() const { return is_kept_; }

  bool is_before_first() const { return is_kept_ ? at_ < 0 || rows_.empty() : is_empty_; }
  bool is_after_last() const;
  const Row* current() const;  // null before the first and after the last row

  void next();
  // Of a kept result; clamped to one before the first and one after the last row.
  void go_to(std::int64_t row);
  std::int64_t position() const { return at_; }  // counted from 0
  std::int64_t size() const { return is_kept_ ? static_cast<std::int64_t>(rows_.size()) : -1; }

  // The statement, for its next result; this one is over then.
  std::unique_ptr<Statement> take_statement() { return std::move(statement_); }

 private:
  std::unique_ptr<Statement> statement_;
  const Columns columns_;
  std::int64_t affected_;
  std::vector<Row> rows_;
  Row row_;  // of a forward-only result
  std::int64_t at_ = 0;
  bool is_kept_;
  bool is_over_ = false;
  bool is_empty_ = false;
};

}  // namespace korlib::odbc
