// `zelto serve`: the site over HTTP, until a signal ends it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zelto {

struct ServeCommand {
  std::string site = ".";
  std::optional<std::string> listen;
  std::optional<unsigned> workers;
  std::optional<std::size_t> body_limit;  // bytes
  bool debug = false;
  bool no_supervisor = false;
};

// The exit code. Throws WrongUse for what cannot be served, and what keeps the server from starting.
int serve_site(const ServeCommand& command);

}  // namespace zelto
