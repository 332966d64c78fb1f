#include "http/target.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "http/status.h"
#include "text/characters.h"
#include "text/path_segments.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

// Decodes the path once; nothing when an escape is malformed or stands for a character that no path has.
std::optional<std::string> decode_path(std::string_view path) {
  std::string decoded;
  decoded.reserve(path.size());
  for (std::size_t at = 0; at < path.size(); ++at) {
    char c = path[at];
    if (c == '%') {
      const auto byte = escaped_byte(path.substr(at));
      if (!byte || *byte == '/') return std::nullopt;
      c = *byte;
      at += 2;
    } else if (static_cast<unsigned char>(c) >= 0x80) {
      return std::nullopt;  // must be sent encoded
    }
    if (is_control(c) || c == '\\') return std::nullopt;
    decoded += c;
  }
  return decoded;
}

// What is not well-formed comes back as a replacement character.
bool is_utf8(std::string_view text) {
  const bool is_ascii = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return is_ascii || korlib::to_utf8(korlib::to_wide(text)) == text;
}

// Names that other systems map onto an existing file: "page.asp.", "page.asp ", "page.asp::$DATA".
bool is_alias_name(std::string_view name) {
  return name.back() == '.' || name.back() == ' ' || name.find(':') != std::string_view::npos;
}

Target refused(int status) {
  Target target;
  target.status = status;
  return target;
}

bool is_host_name(std::string_view name) {
  constexpr std::string_view kNever = "/\\@?#,;\"'<>(){}|^` :[]";
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    if (c <= ' ' || c >= 0x7F || kNever.find(c) != std::string_view::npos) return false;
    if (c == '%' && !escaped_byte(name.substr(i))) return false;
  }
  return true;
}

// What stands between the brackets of "[::1]".
bool is_bracketed_address(std::string_view address) {
  return !address.empty() && address.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

bool is_port(std::string_view rest) {
  return rest.empty() || (rest.front() == ':' && rest.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

// Takes "http://host" off the front of an absolute target; nothing when the target is another.
std::optional<std::string_view> take_authority(std::string_view& target) {
  const auto scheme_end = target.find("://");
  if (scheme_end == std::string_view::npos) return std::nullopt;
  const std::string_view scheme = target.substr(0, scheme_end);
  if (!base::equal_ascii(scheme, "http") && !base::equal_ascii(scheme, "https")) return std::nullopt;
  target.remove_prefix(scheme_end + 3);
  const std::string_view authority = target.substr(0, target.find_first_of("/?"));
  if (authority.empty() || authority.front() == ':' || !is_host(authority)) return std::nullopt;
  target.remove_prefix(authority.size());
  return authority;
}

}  // namespace

// By hand, not with Boost.URL: that one refuses characters that clients send as they are ("{", "|", "^"), and would
// leave all of what is refused here to be found afterwards.
Target parse_target(std::string_view text) {
  if (text.empty()) return refused(status::kBadRequest);
  Target target;
  if (text.front() != '/') {
    const auto authority = take_authority(text);
    if (!authority) return refused(status::kBadRequest);
    target.authority = *authority;
  }
  if (text.find('#') != std::string_view::npos) return refused(status::kBadRequest);
  const auto question = text.find('?');
  if (question != std::string_view::npos) target.query = text.substr(question + 1);
  const auto path = decode_path(text.substr(0, question));
  if (!path || !is_utf8(*path)) return refused(status::kBadRequest);
  auto resolved = resolve_dots(*path);
  if (!resolved) return refused(status::kBadRequest);
  if (std::ranges::any_of(path_segments(*resolved), is_alias_name)) return refused(status::kNotFound);
  target.path = std::move(*resolved);
  const std::string_view last = std::string_view(*path).substr(path->rfind('/') + 1);
  if (target.path.empty() || last.empty() || last == "." || last == "..") target.path += '/';
  return target;
}

bool is_host(std::string_view text) {
  if (text.starts_with('[')) {
    const auto end = text.find(']');
    return end != std::string_view::npos && is_bracketed_address(text.substr(1, end - 1)) &&
           is_port(text.substr(end + 1));
  }
  const auto colon = std::min(text.find(':'), text.size());
  return is_host_name(text.substr(0, colon)) && is_port(text.substr(colon));
}

std::string encode_path(std::string_view path) {
  return percent_encode(path, [](char c) {
    return base::is_alphanumeric(c) || std::string_view("-._~/").find(c) != std::string_view::npos;
  });
}

}  // namespace zelto
