#include "odbc/kept_statements.h"

#include <sql.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "base/letter_case.h"

namespace korlib::odbc {
namespace {

constexpr std::size_t kMostKept = 16;
constexpr std::size_t kLongest = 4096;  // characters

std::atomic<std::int64_t> g_kept{0};

// Whether it asks for whatever columns there are: "SELECT *", but not "COUNT(*)".
bool asks_for_all_columns(std::wstring_view sql) {
  for (std::size_t at = sql.find(L'*'); at != sql.npos; at = sql.find(L'*', at + 1))
    if (at == 0 || sql.substr(at - 1, 3) != L"(*)") return true;
  return false;
}

}  // namespace

bool may_be_kept(std::wstring_view sql) {
  constexpr std::wstring_view kQuery = L"SELECT";
  sql.remove_prefix(std::min(sql.find_first_not_of(L" \t\r\n"), sql.size()));
  return sql.size() <= kLongest && base::equal_ascii(sql.substr(0, kQuery.size()), kQuery) &&
         sql.find(L';') == sql.npos && !asks_for_all_columns(sql);
}

std::unique_ptr<Handle> KeptStatements::take(std::wstring_view sql) {
  const auto found = std::ranges::find(kept_, sql, [](const Kept& one) { return std::wstring_view(one.sql); });
  if (found == kept_.end()) return nullptr;
  std::unique_ptr<Handle> statement = std::move(found->statement);
  kept_.erase(found);
  --g_kept;
  return statement;
}

void KeptStatements::keep(std::wstring sql, std::unique_ptr<Handle> statement) noexcept {
  if (!SQL_SUCCEEDED(SQLFreeStmt(statement->get(), SQL_CLOSE))) return;
  try {
    kept_.push_back({std::move(sql), std::move(statement)});
    ++g_kept;
  } catch (const std::bad_alloc&) {
    return;  // it is freed
  }
  if (kept_.size() <= kMostKept) return;
  kept_.erase(kept_.begin());
  --g_kept;
}

void KeptStatements::clear() noexcept {
  g_kept -= static_cast<std::int64_t>(kept_.size());
  kept_.clear();
}

std::int64_t kept_statements() noexcept { return g_kept; }

}  // namespace korlib::odbc
