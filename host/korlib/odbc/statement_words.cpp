#include "odbc/statement_words.h"

#include <algorithm>
#include <iterator>

#include "base/letter_case.h"

namespace korlib::odbc {
namespace {

constexpr std::wstring_view kHarmless[] = {L"ALTER",   L"ANALYZE",  L"CALL",   L"COMMENT", L"COMMIT",  L"CREATE",
                                           L"DELETE",  L"DESCRIBE", L"DROP",   L"END",     L"EXEC",    L"EXECUTE",
                                           L"EXPLAIN", L"GRANT",    L"INSERT", L"MERGE",   L"REINDEX", L"REPLACE",
                                           L"REVOKE",  L"ROLLBACK", L"SELECT", L"SHOW",    L"TABLE",   L"TRUNCATE",
                                           L"UPDATE",  L"VACUUM",   L"VALUES", L"WITH"};

bool is_letter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// The length of a quoted text or a comment that `sql` begins with; 0 when it begins with neither. One
// without an end goes to the end of the text.
std::size_t passage(std::wstring_view sql) {
  struct Pair {
    std::wstring_view open;
    std::wstring_view close;
  };
  static constexpr Pair kPairs[] = {{L"'", L"'"}, {L"\"", L"\""}, {L"`", L"`"},
                                    {L"[", L"]"}, {L"--", L"\n"}, {L"/*", L"*/"}};
  for (const Pair& pair : kPairs) {
    if (!sql.starts_with(pair.open)) continue;
    const std::size_t end = sql.find(pair.close, pair.open.size());
    return end == std::wstring_view::npos ? sql.size() : end + pair.close.size();
  }
  return 0;
}

bool is_harmless(std::wstring_view word) {
  return std::any_of(std::begin(kHarmless), std::end(kHarmless),
                     [&](std::wstring_view known) { return base::equal_folded(word, known); });
}

}  // namespace

bool may_change_connection(std::wstring_view sql) {
  bool is_at_start = true;
  for (std::size_t at = 0; at < sql.size();) {
    if (const std::size_t skipped = passage(sql.substr(at)); skipped > 0) {
      at += skipped;
      continue;
    }
    if (is_at_start && is_letter(sql[at])) {
      const auto* const end = std::find_if_not(sql.begin() + at, sql.end(), is_letter);
      if (!is_harmless({sql.begin() + at, end})) return true;
      is_at_start = false;
    }
    if (sql[at] == L';') is_at_start = true;
    ++at;
  }
  return false;
}

}  // namespace korlib::odbc
