#include "http/message.h"

#include <algorithm>
#include <array>

#include "base/letter_case.h"

namespace zelto {

const std::string* HttpRequest::header(std::string_view name) const {
  const auto found = std::ranges::find_if(headers, [&](const Header& h) { return base::equal_ascii(h.name, name); });
  return found == headers.end() ? nullptr : &found->value;
}

bool is_connection_header(std::string_view name) {
  constexpr std::array<std::string_view, 7> kNames = {"Content-Length", "Transfer-Encoding", "Connection", "Date",
                                                      "Server",         "Keep-Alive",        "Trailer"};
  return std::ranges::any_of(kNames, [&](std::string_view own) { return base::equal_ascii(own, name); });
}

}  // namespace zelto
