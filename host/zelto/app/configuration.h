// What a site's zelto.toml and the command line say about serving it.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "app/serve_command.h"
#include "http/server.h"
#include "site/site.h"

namespace zelto {

struct Configuration {
  SiteOptions site;
  ServerOptions server;
  std::string log;                        // a file; standard error when empty
  std::chrono::seconds stop_timeout{30};  // that running pages get when the host stops
  bool supervise = true;                  // a process of its own for the server, which is replaced when it fails
  std::chrono::seconds hang_timeout{60};  // without a sign of life, after which it has failed; 0: never
};

// The command line wins over the file, the file over the defaults. Throws WrongUse for what cannot be understood, of
// the file WrongConfiguration.
Configuration read_configuration(const ServeCommand& command);

// Copies what only a restart can change from `running` to `fresh`; answers the keys whose values differed.
std::vector<std::string_view> keep_until_restart(Configuration& fresh, const Configuration& running);

// "127.0.0.1:8080", "localhost:8080", "[::1]:8080" or ":8080" (every address). Throws WrongUse.
void set_listen_address(const std::string& text, ServerOptions& options);

}  // namespace zelto
