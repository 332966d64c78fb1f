#include "odbc/result_set.h"

#include <algorithm>

namespace korlib::odbc {

ResultSet::ResultSet(std::unique_ptr<Statement> statement, bool is_kept)
    : statement_(std::move(statement)),
      columns_(statement_->columns()),
      affected_(statement_->affected_rows()),
      is_kept_(is_kept) {
  if (!has_columns()) return;
  if (is_kept_) {
    Row row;
    while (statement_->fetch(row)) rows_.push_back(std::move(row));
  } else {
    is_over_ = is_empty_ = !statement_->fetch(row_);
  }
}

bool ResultSet::is_after_last() const { return is_kept_ ? at_ >= static_cast<std::int64_t>(rows_.size()) : is_over_; }

const Row* ResultSet::current() const {
  if (!is_kept_) return is_over_ ? nullptr : &row_;
  if (at_ < 0 || is_after_last()) return nullptr;
  return &rows_[static_cast<std::size_t>(at_)];
}

void ResultSet::next() {
  if (is_kept_) {
    go_to(at_ + 1);
    return;
  }
  is_over_ = is_over_ || !statement_->fetch(row_);
  ++at_;
}

void ResultSet::go_to(std::int64_t row) {
  at_ = std::clamp<std::int64_t>(row, -1, static_cast<std::int64_t>(rows_.size()));
}

}  // namespace korlib::odbc
