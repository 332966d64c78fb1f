#include "odbc/kept_statements.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "base/ascii.h"
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

std::wstring_view without_leading_blanks(std::wstring_view sql) {
  sql.remove_prefix(std::min(sql.find_first_not_of(L" \t\r\n"), sql.size()));
  return sql;
}

bool begins_with(std::wstring_view sql, std::wstring_view word) {
  return base::equal_ascii(without_leading_blanks(sql).substr(0, word.size()), word);
}

}  // namespace

bool is_query(std::wstring_view sql) { return begins_with(sql, L"SELECT") || begins_with(sql, L"WITH"); }

bool may_be_kept(std::wstring_view sql) {
  return sql.size() <= kLongest && begins_with(sql, L"SELECT") && sql.find(L';') == sql.npos &&
         !asks_for_all_columns(sql);
}

bool are_columns_of_tables(const Handle& statement, std::size_t count) {
  for (std::size_t column = 1; column <= count; ++column) {
    char name[8] = {};
    SQLSMALLINT length = 0;
    const SQLRETURN result = SQLColAttribute(statement.get(), static_cast<SQLUSMALLINT>(column), SQL_DESC_TABLE_NAME,
                                             name, sizeof name, &length, nullptr);
    if (!SQL_SUCCEEDED(result) || length == 0) return false;
  }
  return true;
}

bool counts_rows(std::wstring_view sql) {
  constexpr std::wstring_view kCount = L"select count(*) ";
  const std::wstring lowered = base::ascii_lowered(sql);
  std::wstring_view rest = without_leading_blanks(lowered);
  if (!rest.starts_with(kCount)) return false;
  rest.remove_prefix(kCount.size());
  if (rest.starts_with(L"as ")) {
    rest.remove_prefix(3);
    while (!rest.empty() && (base::is_alphanumeric(rest.front()) || rest.front() == L'_')) rest.remove_prefix(1);
    if (!rest.starts_with(L' ')) return false;
    rest.remove_prefix(1);
  }
  // With one of the other words there may be no row, or rows of another query.
  constexpr std::wstring_view kOthers[] = {L"union", L"except", L"intersect", L"group", L"having", L"limit", L"offset"};
  return rest.starts_with(L"from ") &&
         std::ranges::none_of(kOthers, [&](std::wstring_view word) { return rest.find(word) != rest.npos; });
}

KeptStatements::Prepared KeptStatements::take(std::wstring_view sql) {
  const auto found = std::ranges::find(kept_, sql, [](const Kept& one) { return std::wstring_view(one.sql); });
  if (found == kept_.end()) return {};
  Prepared statement = std::move(found->statement);
  kept_.erase(found);
  --g_kept;
  return statement;
}

void KeptStatements::keep(std::wstring sql, Prepared statement) noexcept {
  if (!SQL_SUCCEEDED(SQLFreeStmt(statement.handle->get(), SQL_CLOSE))) return;
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
