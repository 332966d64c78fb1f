#include "odbc/driver_text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>

#include <korlib_host/unicode.h>

#include "base/letter_case.h"
#include "odbc/driver_library.h"

namespace korlib::odbc {
namespace {

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && text.front() == L' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == L' ') text.remove_suffix(1);
  return text;
}

// Takes one attribute's value off the front of `rest`, and the semicolon behind it.
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

DriverText text_of_driver(std::wstring_view connection_string) {
  static std::mutex lock;
  static std::map<std::string, DriverText> known;
  const std::string library = library_of(connection_string);
  const std::lock_guard guard(lock);
  const auto found = known.find(library);
  if (found != known.end()) return found->second;
  const DriverText way = takes_wide_text(library) ? DriverText::kWide : DriverText::kBytes;
  constexpr std::size_t kMostKnown = 100;
  if (known.size() < kMostKnown) known.emplace(library, way);
  return way;
}

TextIn::TextIn(DriverText way, std::wstring_view text) : way_(way) {
  if (way == DriverText::kWide) {
    units_ = to_utf16(text);
  } else {
    bytes_ = to_utf8(text);
  }
}

std::wstring TextOut::text(std::int16_t length) const {
  const std::size_t size = static_cast<std::size_t>(std::clamp<std::int16_t>(length, 0, kRoom - 1));
  if (way_ == DriverText::kWide) {
    std::wstring text;
    append_utf16(text, {reinterpret_cast<const char16_t*>(units_), size});
    return text;
  }
  return to_wide({reinterpret_cast<const char*>(bytes_), size});
}

}  // namespace korlib::odbc
