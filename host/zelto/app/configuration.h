// What a site's zelto.toml and the command line say about serving it.
#pragma once

#include <string>

#include "app/commands.h"
#include "app/site.h"
#include "http/server.h"

namespace zelto {

struct Configuration {
  SiteOptions site;
  ServerOptions server;
};

// The command line counts more than the file, the file more than the defaults. Throws WrongUse, with file
// and key, for what cannot be understood.
//
//   listen = "127.0.0.1:8080"
//   workers = 4
//   body_limit = 16777216       # bytes
//   script_timeout = 90         # seconds
//   session_timeout = 20        # minutes
//   session_limit = 50000       # sessions at a time
//   session_node = "a"          # ends the identifiers of sessions, for a proxy in front of several hosts
//   default_documents = ["default.asp", "index.asp"]  # what a folder shows, the first that there is
//   protect = ["drafts/", "*.cfg", "notes.txt"]       # never served; added to what never is
//   trusted_proxies = ["127.0.0.1"]  # whose X-Forwarded-Proto: https makes cookies Secure
//   debug = false
Configuration read_configuration(const ServeCommand& command);

// "127.0.0.1:8080", "localhost:8080", "[::1]:8080" or ":8080" (every address). Throws WrongUse.
void set_listen_address(const std::string& text, ServerOptions& options);

}  // namespace zelto
