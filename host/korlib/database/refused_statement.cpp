#include "database/refused_statement.h"

#include <korlib/comvariant.h>
#include <korlib_host/statement_listener.h>

#include <algorithm>

#include "database/convert.h"

namespace korlib {
namespace {

constexpr std::size_t kMostValue = 200;
constexpr std::size_t kMostValues = 100;

std::wstring shown(const odbc::Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return L"NULL";
  if (const auto* bytes = std::get_if<odbc::Bytes>(&value)) return std::to_wstring(bytes->data.size()) + L" bytes";
  CComVariant as_variant;
  if (FAILED(to_variant(value, &as_variant))) return L"?";
  const bool is_text = as_variant.vt == VT_BSTR;
  if (FAILED(as_variant.change_type(VT_BSTR))) return L"?";
  std::wstring text(view_of(as_variant.bstrVal));
  if (text.size() > kMostValue) text.replace(kMostValue, text.npos, L"…");
  return is_text ? L"'" + text + L"'" : text;
}

}  // namespace

void tell_refused(const std::wstring& sql, const std::vector<odbc::Parameter>& parameters, const std::wstring& error) {
  korlib_host::StatementListener* const listener = korlib_host::statement_listener();
  if (!listener) return;
  std::vector<std::wstring> values;
  for (std::size_t i = 0; i < std::min(parameters.size(), kMostValues); ++i)
    values.push_back(shown(parameters[i].value));
  listener->on_refused(sql, values, error);
}

}  // namespace korlib
