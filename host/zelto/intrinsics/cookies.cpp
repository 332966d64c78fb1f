#include "intrinsics/cookies.h"

#include "text/charset.h"
#include "text/http_date.h"
#include "text/http_grammar.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

std::wstring decoded(std::string_view text) { return to_wide(form_decode(text)); }
std::string encoded(std::wstring_view text) { return form_encode(to_utf8(text)); }

}  // namespace

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
  if (auto keys = parse_form_fields(value, kUtf8CodePage)) cookie.keys = std::move(*keys);
  return cookie;
}

std::string SetCookie::header() const {
  std::string out = encoded(name) + "=";
  if (keys.empty()) {
    out += encoded(value);
  } else {
    std::string_view separator;
    for (const CookieKey& key : keys) {
      out.append(separator).append(encoded(key.name)).append("=").append(encoded(key.value));
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

}  // namespace zelto
