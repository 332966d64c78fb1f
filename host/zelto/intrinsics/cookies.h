// Cookies as requests bring them and as responses set them.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/letter_case.h"
#include "intrinsics/field_table.h"

namespace zelto {

// The row of that name in any letter case, or null.
template <class Rows>
auto* find_named(Rows& rows, std::wstring_view name) {
  const auto found = std::ranges::find_if(rows, [&](const auto& row) { return base::equal_folded(row.name, name); });
  return found == rows.end() ? nullptr : &*found;
}

// A cookie that was received. One of the form "k=v&k=v" also has sub-keys.
struct ReceivedCookie {
  std::wstring name;
  std::wstring value;  // decoded; of a cookie with sub-keys the text as it came
  FieldTable keys;     // the sub-keys, empty for a plain cookie
};

// The cookies of "a=1; b=k=v&l=w", in their order. Of a name that comes twice the first one counts: it is
// the one with the longer path.
std::vector<ReceivedCookie> parse_cookies(std::string_view header);

struct CookieKey {
  std::wstring name;
  std::wstring value;
};

// A cookie to set. Names and values may hold any character; they are encoded when it is written.
struct SetCookie {
  std::wstring name;
  std::wstring value;
  std::vector<CookieKey> keys;    // when not empty, stands instead of the value
  std::optional<double> expires;  // a DATE; without one it lasts for the session
  std::string domain;
  std::string path = "/";
  bool secure = false;
  bool http_only = true;
  std::string same_site = "Lax";  // empty leaves the attribute out

  // The Set-Cookie header's value.
  std::string header() const;
};

}  // namespace zelto
