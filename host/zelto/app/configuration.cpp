#include "app/configuration.h"

#include <fmt/format.h>

#include <toml++/toml.h>
#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <charconv>
#include <filesystem>
#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

#include "app/big_stack.h"

namespace zelto {

namespace {

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
        "session_timeout", "default_documents", "protect",    "debug"};
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
  boost::system::error_code unknown;
  boost::asio::ip::make_address(options.address, unknown);
  if (unknown) throw WrongUse("'" + address + "' is no address to listen on");
}

Configuration read_configuration(const ServeCommand& command) {
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 40;
  const File file(command.site + "/zelto.toml");
  Configuration made;
  made.site.root = command.site;
  made.site.debug = command.debug || file.get<bool>("debug").value_or(false);
  made.site.script_timeout = std::chrono::seconds(file.number("script_timeout", 1, 86400).value_or(90));
  made.site.session_timeout = static_cast<LONG>(file.number("session_timeout", 1, 1440).value_or(20));
  if (auto names = file.texts("default_documents")) made.site.files.default_documents = std::move(*names);
  for (const std::string& name : file.texts("protect").value_or(std::vector<std::string>())) {
    if (!made.site.files.protect(name)) file.fail("protect", "takes \"folder/\", \"*.extension\" or \"file\"");
  }
  set_listen_address(command.listen.value_or(file.get<std::string>("listen").value_or("127.0.0.1:8080")), made.server);
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  const auto workers = file.number("workers", 1, 1024).value_or(std::int64_t{2} * cores);
  made.server.workers = command.workers.value_or(static_cast<unsigned>(workers));
  made.server.worker_stack = kPageStack;
  const auto limit = file.number("body_limit", 0, kMostBytes);
  if (limit) made.server.limits.body_bytes = static_cast<std::uint64_t>(*limit);
  if (command.body_limit) made.server.limits.body_bytes = *command.body_limit;
  return made;
}

}  // namespace zelto
