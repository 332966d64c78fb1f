#include "odbc/failure.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <iterator>

namespace korlib::odbc {
namespace {

constexpr std::int32_t code_of(std::uint32_t bits) { return static_cast<std::int32_t>(bits); }

struct Row {
  std::wstring_view state;  // its first characters
  std::int32_t code;
};
constexpr Row kCodes[] = {
    {L"HYT", code_of(0x80040E31)},                                  // time-out
    {L"23", code_of(0x80040E2F)},                                   // a constraint is violated
    {L"42S02", code_of(0x80040E37)},                                // no such table
    {L"42P01", code_of(0x80040E37)}, {L"42", code_of(0x80040E14)},  // the command has errors
    {L"28", code_of(0x80040E4D)},                                   // authentication
    {L"22", code_of(0x80040E07)},                                   // the data cannot be converted
    {L"HY010", code_of(0x800A0C93)},                                // not at this point
};
constexpr std::int32_t kFail = code_of(0x80004005);

constexpr SQLSMALLINT kStateLength = 5;

}  // namespace

Failure::Failure(std::vector<Diagnostic> diagnostics, bool has_timed_out)
    : diagnostics_(std::move(diagnostics)), has_timed_out_(has_timed_out) {
  if (diagnostics_.empty()) diagnostics_.push_back({L"HY000", 0, L"The database driver failed without saying why."});
}

bool Failure::is_connection_lost() const {
  for (const Diagnostic& one : diagnostics_) {
    if (one.state.starts_with(L"08") || one.state.starts_with(L"57P")) return true;
  }
  return false;
}

std::wstring Failure::text() const {
  std::wstring text;
  for (const Diagnostic& one : diagnostics_) {
    if (!text.empty()) text += L'\n';
    text += one.text;
    if (!one.is_from_driver) continue;
    text += L" [" + one.state + L", " + std::to_wstring(one.native) + L"]";
  }
  return text;
}

std::int32_t Failure::code() const {
  if (has_timed_out_) return kCodes[0].code;
  for (const Row& row : kCodes) {
    if (diagnostics_.front().state.starts_with(row.state)) return row.code;
  }
  return kFail;
}

std::vector<Diagnostic> diagnostics_of(DriverText way, short handle_type, void* handle) {
  constexpr SQLSMALLINT kMost = 20;
  std::vector<Diagnostic> found;
  for (SQLSMALLINT number = 1; number <= kMost; ++number) {
    TextOut state(way);
    TextOut text(way);
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        way == DriverText::kWide
            ? SQLGetDiagRecW(handle_type, handle, number, state.wide(), &native, text.wide(), TextOut::kRoom, &length)
            : SQLGetDiagRec(handle_type, handle, number, state.bytes(), &native, text.bytes(), TextOut::kRoom, &length);
    if (!SQL_SUCCEEDED(result)) break;
    found.push_back({state.text(kStateLength), native, text.text(length), true});
  }
  return found;
}

void check(short result, DriverText way, short handle_type, void* handle) {
  if (SQL_SUCCEEDED(result)) return;
  throw Failure(diagnostics_of(way, handle_type, handle));
}

}  // namespace korlib::odbc
