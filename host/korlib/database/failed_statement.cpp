#include "database/failed_statement.h"

#include <korlib/comvariant.h>
#include <korlib_host/database.h>

#include <algorithm>
#include <utility>

#include "database/convert.h"

namespace korlib {
namespace {

constexpr std::size_t kMostText = std::size_t{16} << 10;
constexpr std::size_t kMostValue = 200;
constexpr std::size_t kMostValues = 100;

thread_local std::optional<korlib_host::FailedStatement> t_failed;

std::wstring beginning_of(std::wstring text, std::size_t most) {
  if (text.size() > most) text.replace(most, text.npos, L"…");
  return text;
}

std::wstring shown(const odbc::Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return L"NULL";
  if (const auto* bytes = std::get_if<odbc::Bytes>(&value)) return std::to_wstring(bytes->data.size()) + L" bytes";
  CComVariant as_variant;
  if (FAILED(to_variant(value, &as_variant))) return L"?";
  const bool is_text = as_variant.vt == VT_BSTR;
  if (FAILED(as_variant.change_type(VT_BSTR))) return L"?";
  std::wstring text = beginning_of(std::wstring(view_of(as_variant.bstrVal)), kMostValue);
  return is_text ? L"'" + text + L"'" : text;
}

}  // namespace

void remember_failed_statement(const std::wstring& sql, const std::vector<odbc::Parameter>& parameters,
                               const std::wstring& error) {
  korlib_host::FailedStatement failed{beginning_of(sql, kMostText), {}, error};
  for (std::size_t i = 0; i < std::min(parameters.size(), kMostValues); ++i)
    failed.parameters.push_back(shown(parameters[i].value));
  t_failed = std::move(failed);
}

void forget_failed_statement() noexcept { t_failed.reset(); }

}  // namespace korlib

std::optional<korlib_host::FailedStatement> korlib_host::take_failed_statement() noexcept {
  return std::exchange(korlib::t_failed, std::nullopt);
}
