#include "app/configuration.h"

#include <fmt/format.h>

#include <toml++/toml.h>
#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

#include "app/big_stack.h"

namespace zelto {

namespace {

bool is_address(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return !error;
}

class File {
 public:
  explicit File(const std::string& name) : name_(name) {
    if (!std::filesystem::exists(name)) return;
    try {
      table_ = toml::parse_file(name);
    } catch (const toml::parse_error& error) {
      throw WrongUse(fmt::format("{}:{}: {}", name, error.source().begin.line, std::string(error.description())));
    }
    static const std::set<std::string_view> known{
        "listen",          "workers",           "body_limit", "script_timeout",
        "session_timeout", "default_documents", "protect",    "trusted_proxies",
        "session_limit",   "session_node",      "debug"};
    for (const auto& [key, value] : table_) {
      if (!known.contains(key.str())) fail(key.str(), "is not known");
    }
  }

  template <class Value>
  std::optional<Value> get(std::string_view key) const {
    const auto node = table_[key];
    if (!node) return std::nullopt;
    auto value = node.template value_exact<Value>();
    if (!value) fail(key, "has a value of the wrong type");
    return value;
  }
  std::optional<std::vector<std::string>> texts(std::string_view key) const {
    const auto node = table_[key];
    if (!node) return std::nullopt;
    std::vector<std::string> values;
    const toml::array* list = node.as_array();
    if (!list) fail(key, "is no list");
    for (const auto& element : *list) {
      const auto text = element.value_exact<std::string>();
      if (!text) fail(key, "has a value of the wrong type");
      values.push_back(*text);
    }
    return values;
  }
  std::optional<std::int64_t> number(std::string_view key, std::int64_t least, std::int64_t most) const {
    const auto value = get<std::int64_t>(key);
    if (value && (*value < least || *value > most)) {
      fail(key, fmt::format("is a number from {} to {}", least, most));
    }
    return value;
  }
  [[noreturn]] void fail(std::string_view key, std::string_view what) const {
    throw WrongUse(fmt::format("{}: {} {}", name_, key, what));
  }

 private:
  std::string name_;
  toml::table table_;
};

void read_site(const File& file, SiteOptions& site) {
  site.debug = file.get<bool>("debug").value_or(false);
  site.script_timeout = std::chrono::seconds(file.number("script_timeout", 1, 86400).value_or(90));
  site.session_timeout = static_cast<LONG>(file.number("session_timeout", 1, 1440).value_or(20));
  const auto limit = file.number("session_limit", 1, 10'000'000);
  if (limit) site.session_limit = static_cast<std::size_t>(*limit);
  if (const auto node = file.get<std::string>("session_node")) {
    const auto is_plain = [](unsigned char c) { return std::isalnum(c) != 0; };
    if (node->empty() || !std::ranges::all_of(*node, is_plain)) file.fail("session_node", "takes letters and digits");
    site.session_suffix = "." + *node;
  }
  if (auto names = file.texts("default_documents")) site.files.default_documents = std::move(*names);
  for (const std::string& name : file.texts("protect").value_or(std::vector<std::string>())) {
    if (!site.files.protect(name)) file.fail("protect", "takes \"folder/\", \"*.extension\" or \"file\"");
  }
}

void read_server(const File& file, ServerOptions& server) {
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 40;
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  set_listen_address(file.get<std::string>("listen").value_or("127.0.0.1:8080"), server);
  server.workers = static_cast<unsigned>(file.number("workers", 1, 1024).value_or(std::int64_t{2} * cores));
  server.worker_stack = kPageStack;
  const auto limit = file.number("body_limit", 0, kMostBytes);
  if (limit) server.limits.body_bytes = static_cast<std::uint64_t>(*limit);
  for (const std::string& proxy : file.texts("trusted_proxies").value_or(std::vector<std::string>())) {
    if (!is_address(proxy)) file.fail("trusted_proxies", "takes addresses, as in \"127.0.0.1\"");
    server.trusted_proxies.push_back(boost::asio::ip::make_address(proxy).to_string());
  }
}

}  // namespace

void set_listen_address(const std::string& text, ServerOptions& options) {
  const std::size_t colon = text.rfind(':');
  std::string address = text.substr(0, colon == std::string::npos ? 0 : colon);
  const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
  if (address.starts_with('[') && address.ends_with(']')) address = address.substr(1, address.size() - 2);
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), options.port);
  if (port.empty() || error != std::errc{} || end != port.data() + port.size()) {
    throw WrongUse("'" + text + "' is no ADDRESS:PORT");
  }
  if (address == "localhost") address = "127.0.0.1";
  options.address = address.empty() ? "0.0.0.0" : address;
  if (!is_address(options.address)) throw WrongUse("'" + address + "' is no address to listen on");
}

Configuration read_configuration(const ServeCommand& command) {
  const File file(command.site + "/zelto.toml");
  Configuration made;
  made.site.root = command.site;
  read_site(file, made.site);
  made.site.debug |= command.debug;
  read_server(file, made.server);
  if (command.listen) set_listen_address(*command.listen, made.server);
  if (command.workers) made.server.workers = *command.workers;
  if (command.body_limit) made.server.limits.body_bytes = *command.body_limit;
  return made;
}

}  // namespace zelto
