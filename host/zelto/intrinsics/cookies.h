// Cookies as requests bring them and as responses set them.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/keyed_hash.h"
#include "base/letter_case.h"
#include "base/ordered_table.h"
#include "intrinsics/field_table.h"
#include "text/http_grammar.h"

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

// "name=value" of a Cookie header.
ReceivedCookie parse_cookie(std::string_view pair);

// Cookies in their order, found by name in any letter case, which `Equal` compares. A client may send thousands.
template <class Equal = base::FoldedEqual>
class CookieTable : public base::OrderedTable<&ReceivedCookie::name, base::FoldedHash, Equal, base::ByPlaces> {
 public:
  // Adds those of "a=1; b=k=v&l=w". Of a name that comes twice the first one counts: it is the one with the longer
  // path.
  void add_header(std::string_view header);
};
using ReceivedCookies = CookieTable<>;

template <class Equal>
void CookieTable<Equal>::add_header(std::string_view header) {
  for_each_piece(header, ';', [&](std::string_view piece) {
    const std::string_view pair = trim_blanks(piece);
    if (pair.empty() || pair.front() == '=') return;
    ReceivedCookie cookie = parse_cookie(pair);
    if (!this->find(cookie.name)) this->add(std::move(cookie));
  });
}

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
