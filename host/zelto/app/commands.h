// What the command line can ask for.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zelto {

// Exit codes, as zelto --help tells them.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kLeftOver = 3;  // after serving, some object was still alive

// The command line or zelto.toml asks for what cannot be: ends the program with kWrongUse.
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct RunCommand {
  std::string page;  // a file
  std::string site;  // its root; the page's folder when empty
  std::string query;
  std::string method;  // GET, or POST when there is a body
  std::vector<std::string> headers;
  std::string body_file;  // "-" is standard input; empty for none
  bool include_headers = false;
  bool debug = false;
};

struct ServeCommand {
  std::string site = ".";
  std::optional<std::string> listen;
  std::optional<unsigned> workers;
  std::optional<std::size_t> body_limit;  // bytes
  bool debug = false;
};

// Each answers the exit code; problems it writes to standard error or throws.
int run_page_file(const RunCommand& command);
int serve_site(const ServeCommand& command);
int register_library(const std::string& library);
int unregister_library(const std::string& library);

// The whole program.
int run_command_line(int argc, const char* const* argv);

}  // namespace zelto
