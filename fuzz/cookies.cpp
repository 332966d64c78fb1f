// Cookies that a request brings, against a reader written by their rules; and cookies that a page sets, which come
// back as they were set.
#include "intrinsics/cookies.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "text/charset.h"
#include "text/http_date.h"
#include "text_input.h"

namespace {

using zelto::ReceivedCookie;
using zelto::ReceivedCookies;
using zelto::SetCookie;

int digit_of(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::wstring decoded(std::string_view text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%' && at + 2 < text.size() && digit_of(text[at + 1]) >= 0 && digit_of(text[at + 2]) >= 0) {
      bytes += static_cast<char>(digit_of(text[at + 1]) * 16 + digit_of(text[at + 2]));
      at += 2;
    } else {
      bytes += text[at] == '+' ? ' ' : text[at];
    }
  }
  return zelto::to_wide(bytes);
}

// A text in pieces between separators, empty ones included.
std::vector<std::string> pieces_of(std::string_view text, char separator) {
  std::vector<std::string> pieces{""};
  for (const char c : text) {
    if (c == separator)
      pieces.emplace_back();
    else
      pieces.back() += c;
  }
  return pieces;
}

std::string without_blanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

struct Expected {
  std::wstring name;
  std::string raw;  // what stands after the equals sign, without quotes
};

std::vector<Expected> by_the_rules(std::string_view header) {
  std::vector<Expected> all;
  for (const std::string& piece : pieces_of(header, ';')) {
    const std::string pair = without_blanks(piece);
    if (pair.empty() || pair[0] == '=') continue;
    const std::size_t equals = std::min(pair.find('='), pair.size());
    std::string raw = equals < pair.size() ? without_blanks(pair.substr(equals + 1)) : "";
    if (raw.size() > 1 && raw.front() == '"' && raw.back() == '"') raw = raw.substr(1, raw.size() - 2);
    const std::wstring name = decoded(without_blanks(pair.substr(0, equals)));
    const bool is_there =
        std::ranges::any_of(all, [&](const Expected& cookie) { return base::equal_folded(cookie.name, name); });
    if (!is_there) all.push_back({name, raw});
  }
  return all;
}

// The values of the sub-keys of that name, in any letter case.
std::vector<std::wstring> values_of(std::string_view raw, std::wstring_view name) {
  std::vector<std::wstring> values;
  for (const std::string& pair : pieces_of(raw, '&')) {
    const std::size_t equals = std::min(pair.find('='), pair.size());
    if (pair.empty() || !base::equal_folded(decoded(pair.substr(0, equals)), name)) continue;
    values.push_back(decoded(pair.substr(std::min(equals + 1, pair.size()))));
  }
  return values;
}

void check_received(std::string_view header) {
  ReceivedCookies cookies;
  cookies.add_header(header);
  const std::vector<Expected> expected = by_the_rules(header);
  fuzz::require(cookies.size() == expected.size(), "as many cookies");
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const ReceivedCookie& cookie = cookies[i];
    fuzz::require(cookie.name == expected[i].name, "names in their order");
    fuzz::require(cookies.find(cookie.name) == &cookie, "found by their names");
    const std::string& raw = expected[i].raw;
    if (raw.find('=') == std::string::npos) {
      fuzz::require(cookie.value == decoded(raw) && cookie.keys.empty(), "a plain value");
      continue;
    }
    fuzz::require(cookie.value == zelto::to_wide(raw), "a value with sub-keys is the text as it came");
    for (const zelto::Field& key : cookie.keys) {
      fuzz::require(key.values == values_of(raw, key.name), "the values of its sub-keys");
    }
  }

  // Two headers are one that is cut after a semicolon.
  const std::size_t cut = header.find(';', header.size() / 2);
  if (cut == std::string_view::npos) return;
  ReceivedCookies halves;
  halves.add_header(header.substr(0, cut));
  halves.add_header(header.substr(cut + 1));
  fuzz::require(std::ranges::equal(halves, cookies, {}, &ReceivedCookie::name, &ReceivedCookie::name),
                "in two headers");
}

// The first line names the cookie, each further one a sub-key and, after a tab, its value.
SetCookie cookie_of(std::string_view bytes) {
  SetCookie cookie;
  for (const std::string& line : pieces_of(bytes, '\n')) {
    const std::vector<std::string> texts = pieces_of(line, '\t');
    const std::wstring name = zelto::to_wide(texts[0]);
    const std::wstring value = zelto::to_wide(texts.size() > 1 ? texts[1] : std::string());
    if (cookie.name.empty()) {
      cookie.name = name;
      cookie.value = value;
    } else if (!zelto::find_named(cookie.keys, name)) {
      cookie.keys.push_back({name, value});
    }
  }
  return cookie;
}

void check_set(SetCookie cookie, double expires) {
  if (cookie.name.empty()) return;
  cookie.expires = expires;
  const std::string header = cookie.header();
  for (const char c : header) fuzz::require(c >= ' ' && c < 0x7F, "a header's value");
  const std::vector<std::string> parts = pieces_of(header, ';');
  fuzz::require(parts.size() == 5 && parts[2] == " Path=/" && parts[3] == " HttpOnly" && parts[4] == " SameSite=Lax",
                "its attributes");
  fuzz::require(parts[1].starts_with(" Expires="), "when it expires");
  fuzz::require(zelto::parse_http_date(parts[1].substr(9)) == zelto::moment_of(expires), "as a date that HTTP reads");

  ReceivedCookies back;
  back.add_header(parts[0] + "; z=1");
  const ReceivedCookie* received = back.find(cookie.name);
  fuzz::require(received && received->name == cookie.name, "its name comes back");
  if (cookie.keys.empty()) {
    fuzz::require(received->value == cookie.value && received->keys.empty(), "and its value");
    return;
  }
  if (cookie.keys.size() > zelto::kMaxFormFields) return;
  fuzz::require(received->keys.size() == cookie.keys.size(), "and each sub-key");
  for (std::size_t i = 0; i < cookie.keys.size(); ++i) {
    const zelto::Field& key = received->keys[i];
    fuzz::require(key.name == cookie.keys[i].name, "under its name");
    fuzz::require(key.values == std::vector{cookie.keys[i].value}, "with its value");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 2048));
  check_received(bytes);
  check_set(cookie_of(bytes), fuzz::double_from(data, size));
  return 0;
}
