#include "odbc/connection_string.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/letter_case.h"

namespace korlib::odbc {
namespace {

std::wstring_view trimmed(std::wstring_view text) {
  return base::trimmed(text, [](wchar_t c) { return c == L' '; });
}

// Takes one attribute's value off the front of `rest`, and the semicolon after it.
std::wstring take_value(std::wstring_view& rest) {
  std::wstring value;
  if (rest.starts_with(L'{')) {
    std::size_t at = 1;
    for (; at < rest.size(); ++at) {
      if (rest[at] == L'}' && (at + 1 >= rest.size() || rest[at + 1] != L'}')) break;
      if (rest[at] == L'}') ++at;
      value.push_back(rest[at]);
    }
    rest.remove_prefix(std::min(at, rest.size()));
  } else {
    value = trimmed(rest.substr(0, rest.find(L';')));
  }
  const std::size_t end = rest.find(L';');
  rest.remove_prefix(end == std::wstring_view::npos ? rest.size() : end + 1);
  return value;
}

// A value as connection strings quote it.
std::wstring braced(std::wstring_view value) {
  std::wstring quoted = L"{";
  for (const wchar_t c : value) quoted.append(c == L'}' ? 2 : 1, c);
  return quoted + L"}";
}

}  // namespace

std::wstring attribute_of(std::wstring_view connection_string, std::wstring_view name) {
  std::wstring_view rest = connection_string;
  while (!rest.empty()) {
    const std::size_t equals = rest.find(L'=');
    if (equals == std::wstring_view::npos) break;
    std::wstring_view key = rest.substr(0, equals);
    if (const std::size_t start = key.rfind(L';'); start != std::wstring_view::npos) key.remove_prefix(start + 1);
    rest.remove_prefix(equals + 1);
    std::wstring value = take_value(rest);
    if (base::equal_folded(trimmed(key), name)) return value;
  }
  return {};
}

std::wstring complete_connection_string(std::wstring_view given, std::wstring_view user, std::wstring_view password) {
  std::wstring text(given);
  if (!text.empty() && text.find(L'=') == std::wstring::npos) text = L"DSN=" + text;
  const auto add = [&text](std::wstring_view name, std::wstring_view value) {
    if (value.empty()) return;
    if (!text.ends_with(L';')) text += L';';
    text.append(name).append(braced(value));
  };
  add(L"UID=", user);
  add(L"PWD=", password);
  return text;
}

}  // namespace korlib::odbc
