#include "app/configuration_file.h"

#include <fmt/format.h>

#include <toml++/toml.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "app/command_line.h"

namespace zelto {

namespace {

struct Key {
  std::string_view name;
  std::string_view value;  // the default, or an example
  std::string_view meaning;
};

constexpr std::array<Key, 25> kKeys = {{
    {"listen", "\"127.0.0.1:8080\"", "where to serve"},
    {"workers", "4", "pages at the same time, by default two a core"},
    {"body_limit", "16777216", "bytes of a request's body"},
    {"upload_parts", "20000", "parts of a multipart body"},
    {"underscore_headers", "false", "take X_User, which pages cannot tell from X-User"},
    {"script_timeout", "90", "seconds that a page may take"},
    {"script_memory", "1073741824", "bytes that a page's objects may take"},
    {"stop_timeout", "30", "seconds that pages get to end when the host stops"},
    {"supervise", "true", "a process for the server, started again when it dies or hangs"},
    {"hang_timeout", "60", "seconds without a sign of life that are hanging, 0 for never"},
    {"session_timeout", "20", "minutes without a request that end a session"},
    {"session_limit", "50000", "sessions at a time"},
    {"session_queue", "8", "requests that wait for another one of their session"},
    {"session_node", "\"a\"", "ends session identifiers, to tell hosts apart"},
    {"default_documents", "[\"default.asp\"]", "what a folder shows: the first that exists"},
    {"protect", "[\"drafts/\", \"*.cfg\"]", "what is never served, beyond the usual"},
    {"unknown_types", "\"download\"", "files whose type is not known; or \"refuse\""},
    {"trusted_proxies", "[\"127.0.0.1\"]", "whose X-Forwarded-Proto is believed"},
    {"connections", "4096", "at a time; those that wait for their client longest give way"},
    {"connections_per_address", "2048", "of these, 0 for no limit; trusted proxies have none"},
    {"buffer_memory", "134217728", "bytes that wait for slow clients; more waits in files"},
    {"spool_limit", "4294967296", "bytes in such files"},
    {"spool_folder", "\"/var/tmp\"", "where they lie, without names"},
    {"log", "\"/var/log/zelto.log\"", "the file of the log, else standard error"},
    {"debug", "false", "error pages show what went wrong"},
}};

const Key* find_key(std::string_view name) {
  const auto* found = std::ranges::find(kKeys, name, &Key::name);
  return found == kKeys.end() ? nullptr : found;
}

toml::table parse(const std::string& name) {
  std::error_code error;
  const auto status = std::filesystem::status(name, error);
  if (status.type() == std::filesystem::file_type::not_found) return {};
  if (!error && !std::filesystem::is_regular_file(status)) throw WrongUse(name + " is not a file");
  std::ifstream in(name);
  if (!in) throw WrongUse(name + " cannot be read: " + std::generic_category().message(errno));
  try {
    return toml::parse(in, name);
  } catch (const toml::parse_error& problem) {
    throw WrongUse(fmt::format("{}:{}: {}", name, problem.source().begin.line, std::string(problem.description())));
  }
}

}  // namespace

class ConfigurationFile::Impl {
 public:
  explicit Impl(const std::string& file) : name(file), table(parse(file)) {}

  [[noreturn]] void fail(std::string_view key, std::string_view what) const {
    throw WrongUse(fmt::format("{}:{}: {} {}", name, table.get(key)->source().begin.line, key, what));
  }
  [[noreturn]] void fail_type(std::string_view key) const {
    fail(key, fmt::format("has a value of the wrong type; a right one is {}", find_key(key)->value));
  }
  template <class Value>
  std::optional<Value> get(std::string_view key) const {
    const auto node = table[key];
    if (!node) return std::nullopt;
    auto value = node.template value_exact<Value>();
    if (!value) fail_type(key);
    return value;
  }

  const std::string name;
  const toml::table table;
};

ConfigurationFile::ConfigurationFile(const std::string& name) : impl_(std::make_unique<Impl>(name)) {
  for (const auto& [key, value] : impl_->table)
    if (!find_key(key.str())) fail(key.str(), "is not known; zelto serve --help lists what is");
}

ConfigurationFile::~ConfigurationFile() = default;

void ConfigurationFile::fail(std::string_view key, std::string_view what) const { impl_->fail(key, what); }

std::optional<bool> ConfigurationFile::flag(std::string_view key) const { return impl_->get<bool>(key); }

std::optional<std::string> ConfigurationFile::text(std::string_view key) const { return impl_->get<std::string>(key); }

std::optional<std::vector<std::string>> ConfigurationFile::texts(std::string_view key) const {
  const auto node = impl_->table[key];
  if (!node) return std::nullopt;
  const toml::array* list = node.as_array();
  if (!list) impl_->fail_type(key);
  std::vector<std::string> values;
  for (const auto& element : *list) {
    const auto text = element.value_exact<std::string>();
    if (!text) impl_->fail_type(key);
    values.push_back(*text);
  }
  return values;
}

std::optional<std::int64_t> ConfigurationFile::number(std::string_view key, std::int64_t least,
                                                      std::int64_t most) const {
  const auto value = impl_->get<std::int64_t>(key);
  if (value && (*value < least || *value > most)) fail(key, fmt::format("is a number from {} to {}", least, most));
  return value;
}

std::string ConfigurationFile::help() {
  std::string lines;
  for (const Key& key : kKeys)
    lines += fmt::format("  {:<38}# {}\n", fmt::format("{} = {}", key.name, key.value), key.meaning);
  return lines;
}

}  // namespace zelto
