#include "odbc/failure.h"

#include <algorithm>

namespace korlib::odbc {

Failure::Failure(std::vector<Diagnostic> diagnostics) : diagnostics_(std::move(diagnostics)) {
  if (diagnostics_.empty()) diagnostics_.push_back({L"HY000", 0, L"The database driver failed without saying why."});
}

bool Failure::is_connection_lost() const {
  return std::ranges::any_of(diagnostics_, [](const Diagnostic& one) {
    return one.state.starts_with(L"08") || one.state.starts_with(L"57P");
  });
}

std::wstring Failure::text() const {
  std::wstring text;
  for (const Diagnostic& one : diagnostics_) {
    if (!text.empty()) text += L'\n';
    text += one.text;
    if (one.is_from_driver) text += L" [" + one.state + L", " + std::to_wstring(one.native) + L"]";
  }
  return text;
}

}  // namespace korlib::odbc
