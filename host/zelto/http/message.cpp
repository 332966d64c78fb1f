#include "http/message.h"

#include <algorithm>
#include <array>

#include "base/letter_case.h"

namespace zelto {

const std::string* HttpRequest::header(std::string_view name) const {
  const auto found = std::ranges::find_if(headers, [&](const Header& h) { return base::equal_ascii(h.name, name); });
  return found == headers.end() ? nullptr : &found->value;
}

bool came_encrypted(const HttpRequest& request, const std::vector<std::string>& trusted_proxies) {
  if (std::ranges::find(trusted_proxies, request.remote_address) == trusted_proxies.end()) return false;
  // Of two headers, one may have come from that client.
  const auto is_said = [](const Header& header) { return base::equal_ascii(header.name, "X-Forwarded-Proto"); };
  return std::ranges::count_if(request.headers, is_said) == 1 &&
         base::equal_ascii(*request.header("X-Forwarded-Proto"), "https");
}

bool is_connection_header(std::string_view name) {
  constexpr std::array<std::string_view, 7> kNames = {"Content-Length", "Transfer-Encoding", "Connection", "Date",
                                                      "Server",         "Keep-Alive",        "Trailer"};
  return std::ranges::any_of(kNames, [&](std::string_view own) { return base::equal_ascii(own, name); });
}

}  // namespace zelto
