#include "http/message.h"

#include <algorithm>

namespace zelto {

namespace {

bool same_name(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace

const std::string* HttpRequest::header(std::string_view name) const {
  const auto found = std::ranges::find_if(headers, [&](const Header& h) { return same_name(h.name, name); });
  return found == headers.end() ? nullptr : &found->value;
}

}  // namespace zelto
