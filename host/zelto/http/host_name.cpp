#include "http/host_name.h"

#include <algorithm>

namespace zelto {

namespace {

bool is_name(std::string_view name) {
  constexpr std::string_view kNever = "/\\@?#,;\"'<>(){}|^` :[]";
  return std::ranges::all_of(name,
                             [&](char c) { return c > ' ' && c < 0x7F && kNever.find(c) == std::string_view::npos; });
}

// What stands between the brackets of "[::1]".
bool is_address(std::string_view address) {
  return !address.empty() && address.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

bool is_port(std::string_view rest) {
  return rest.empty() || (rest.front() == ':' && rest.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

}  // namespace

bool is_host(std::string_view text) {
  if (text.starts_with('[')) {
    const auto end = text.find(']');
    return end != std::string_view::npos && is_address(text.substr(1, end - 1)) && is_port(text.substr(end + 1));
  }
  const auto colon = std::min(text.find(':'), text.size());
  return is_name(text.substr(0, colon)) && is_port(text.substr(colon));
}

}  // namespace zelto
