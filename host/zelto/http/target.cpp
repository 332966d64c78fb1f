#include "http/target.h"

#include <optional>
#include <vector>

#include "base/letter_case.h"
#include "http/host_name.h"
#include "text/characters.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

constexpr int kBadRequest = 400;
constexpr int kNotFound = 404;

// Decodes one segment; nothing when an escape is malformed or stands for a character that no segment has.
std::optional<std::string> decode_segment(std::string_view segment) {
  std::string decoded;
  decoded.reserve(segment.size());
  for (std::size_t at = 0; at < segment.size(); ++at) {
    char c = segment[at];
    if (c == '%') {
      const auto byte = escaped_byte(segment.substr(at));
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

// The length of the well-formed UTF-8 sequence at the front of `text`, 0 when there is none.
std::size_t sequence_length(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t at = 1; at < length; ++at)
    if ((byte(at) & 0xC0) != 0x80) return 0;
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool surrogate = lead == 0xED && byte(1) > 0x9F;
  const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
  return overlong || surrogate || beyond ? 0 : length;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = sequence_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
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

// Takes "http://host" off the front of an absolute target; nothing when it is no such target.
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

Target parse_target(std::string_view text) {
  if (text.empty()) return refused(kBadRequest);
  Target target;
  if (text.front() != '/') {
    const auto authority = take_authority(text);
    if (!authority) return refused(kBadRequest);
    target.authority = *authority;
  }
  if (text.find('#') != std::string_view::npos) return refused(kBadRequest);
  const auto question = text.find('?');
  if (question != std::string_view::npos) target.query = text.substr(question + 1);
  std::string_view path = text.substr(0, question);

  std::vector<std::string> kept;
  bool ends_open = true;  // whether the path ends with a slash
  while (!path.empty()) {
    path.remove_prefix(path.front() == '/' ? 1 : 0);
    const auto slash = std::min(path.find('/'), path.size());
    auto segment = decode_segment(path.substr(0, slash));
    path.remove_prefix(slash);
    if (!segment || !is_utf8(*segment)) return refused(kBadRequest);
    ends_open = segment->empty() || *segment == "." || *segment == "..";
    if (*segment == "..") {
      if (kept.empty()) return refused(kBadRequest);
      kept.pop_back();
    } else if (!ends_open) {
      kept.push_back(std::move(*segment));
    }
  }
  for (const auto& segment : kept) {
    if (is_alias_name(segment)) return refused(kNotFound);
    target.path += '/';
    target.path += segment;
  }
  if (ends_open || kept.empty()) target.path += '/';
  return target;
}

std::string encode_path(std::string_view path) {
  return percent_encode(
      path, [](char c) { return is_alphanumeric(c) || std::string_view("-._~/").find(c) != std::string_view::npos; });
}

}  // namespace zelto
