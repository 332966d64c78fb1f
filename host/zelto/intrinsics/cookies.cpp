#include "intrinsics/cookies.h"

#include <algorithm>

#include "text/ascii.h"
#include "text/charset.h"
#include "text/dates.h"
#include "text/url_encoding.h"

namespace zelto {

namespace {

std::wstring decoded(std::string_view text) { return to_wide(percent_decode(text)); }
std::string encoded(std::wstring_view text) { return url_encode(to_utf8(text)); }

ReceivedCookie parse_cookie(std::string_view pair) {
  ReceivedCookie cookie;
  const std::size_t equals = pair.find('=');
  cookie.name = decoded(trim_blanks(pair.substr(0, equals)));
  std::string_view value = equals == std::string_view::npos ? std::string_view() : trim_blanks(pair.substr(equals + 1));
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
  if (value.find('=') == std::string_view::npos) {
    cookie.value = decoded(value);
    return cookie;
  }
  cookie.value = to_wide(value);
  if (auto keys = parse_urlencoded(value, kUtf8CodePage)) cookie.keys = std::move(*keys);
  return cookie;
}

}  // namespace

std::vector<ReceivedCookie> parse_cookies(std::string_view header) {
  std::vector<ReceivedCookie> cookies;
  while (!header.empty()) {
    const std::size_t end = header.find(';');
    const std::string_view pair = trim_blanks(header.substr(0, end));
    header.remove_prefix(end == std::string_view::npos ? header.size() : end + 1);
    if (pair.empty() || pair.front() == '=') continue;
    ReceivedCookie cookie = parse_cookie(pair);
    if (!find_cookie(cookies, cookie.name)) cookies.push_back(std::move(cookie));
  }
  return cookies;
}

const ReceivedCookie* find_cookie(const std::vector<ReceivedCookie>& cookies, std::wstring_view name) {
  const std::wstring wanted = fold_name(name);
  const auto found = std::ranges::find_if(cookies, [&](const auto& c) { return fold_name(c.name) == wanted; });
  return found == cookies.end() ? nullptr : &*found;
}

std::string SetCookie::header() const {
  std::string out = encoded(name) + "=";
  if (keys.empty()) {
    out += encoded(value);
  } else {
    std::string_view separator;
    for (const auto& [key, key_value] : keys) {
      out.append(separator).append(encoded(key)).append("=").append(encoded(key_value));
      separator = "&";
    }
  }
  if (expires) out += "; Expires=" + http_date_of(*expires);
  if (!domain.empty()) out += "; Domain=" + domain;
  if (!path.empty()) out += "; Path=" + path;
  if (secure) out += "; Secure";
  if (http_only) out += "; HttpOnly";
  if (!same_site.empty()) out += "; SameSite=" + same_site;
  return out;
}

bool is_cookie_attribute(std::string_view text) {
  return std::ranges::none_of(text,
                              [](char c) { return c == ';' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

}  // namespace zelto
