#include "app/configuration_file.h"

#include <fmt/format.h>

#include <toml++/toml.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "app/command_line.h"
#include "app/suggestion.h"
#include "text/characters.h"

namespace zelto {

namespace {

struct Key {
  std::string_view name;
  std::string_view value;  // the default, or an example
  std::string_view meaning;
};

constexpr std::array<Key, 28> kKeys = {{
    {"listen", "\"127.0.0.1:8080\"", "where to serve"},
    {"workers", "4", "pages at the same time, by default two a core"},
    {"body_limit", "16777216", "bytes of a request's body"},
    {"upload_parts", "20000", "parts of a multipart body"},
    {"underscore_headers", "false", "take X_User, which pages cannot tell from X-User"},
    {"language", "\"JavaScript\"", "of pages without a directive that says; or \"VBScript\""},
    {"script_timeout", "90", "seconds that a page may take"},
    {"script_memory", "1073741824", "bytes that a page may take"},
    {"kept_memory", "4294967296", "bytes in all beyond which sessions and Application keep no more"},
    {"stop_timeout", "30", "seconds that pages get to end when the host stops"},
    {"supervise", "true", "a process for the server, started again when it dies or hangs"},
    {"hang_timeout", "60", "seconds without a sign of life that are hanging, 0 for never"},
    {"session_timeout", "20", "minutes without a request that end a session"},
    {"session_limit", "50000", "sessions at a time"},
    {"session_queue", "8", "requests that wait for another one of their session"},
    {"session_node", "\"a\"", "ends session identifiers, to tell hosts apart"},
    {"default_documents", "[\"default.asp\"]", "what a folder shows: the first that it has; [] for nothing"},
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
    {"debug_panel", "false", "with debug, pages end with what they did"},
}};

const Key* find_key(std::string_view name) {
  const auto* found = std::ranges::find(kKeys, name, &Key::name);
  return found == kKeys.end() ? nullptr : found;
}

bool is_beyond_ascii(char c) { return static_cast<unsigned char>(c) >= 0x80; }

// Where the comment or string at the front of the text ends, the character `before` being in front of it; 1 for any
// other character, and for a quote where no string can begin. A string is left early at a character beyond ASCII that
// follows a continued line, because the library reads it as it reads those outside of strings.
std::size_t past_piece(std::string_view text, char before) {
  if (text.front() == '#') return std::min(text.find('\n'), text.size());
  const char quote = text.front();
  if (quote != '"' && quote != '\'') return 1;
  if (std::string_view(" \t\r\n=[,.{").find(before) == std::string_view::npos) return 1;
  const std::string three(3, quote);
  const bool has_lines = text.starts_with(three);
  const std::string_view close = has_lines ? std::string_view(three) : std::string_view(three).substr(2);
  std::size_t at = close.size();
  while (at < text.size() && !text.substr(at).starts_with(close)) {
    if (!has_lines && text[at] == '\n') return at;  // it is not closed, which the library tells
    const bool is_escape = quote == '"' && text[at] == '\\';
    const std::size_t next = std::min(text.find_first_not_of(" \t\r\n", at + 1), text.size());
    const bool is_continued = is_escape && has_lines && next > at + 1;
    if (is_continued && next < text.size() && is_beyond_ascii(text[next])) return next;
    at += is_escape ? 2 : 1;
  }
  at = std::min(at + close.size(), text.size());
  for (int more = 0; has_lines && more < 2 && at < text.size() && text[at] == quote; ++more) ++at;
  return at;
}

using Faults = std::vector<ConfigurationFault>;

int to_int(std::size_t number) { return static_cast<int>(number); }

ConfigurationFault fault_at(const toml::source_position& place, const std::string& text) {
  return {to_int(place.line), to_int(place.column), plain_line(text)};
}

// Outside of strings and comments the format has ASCII alone. What the library does with other characters there is
// not defined, so it is not shown them.
std::optional<ConfigurationFault> check_characters(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += past_piece(text.substr(at), at > 0 ? text[at - 1] : '\n')) {
    if (!is_beyond_ascii(text[at])) continue;
    const std::string_view before = text.substr(0, at);
    const auto line = 1 + std::ranges::count(before, '\n');
    const std::size_t column = at - (before.rfind('\n') + 1) + 1;
    return ConfigurationFault{static_cast<int>(line), to_int(column),
                              "a character beyond ASCII stands outside of quotes or after a continued line"};
  }
  return std::nullopt;
}

// The line of that number, from 1.
std::string_view line_of(std::string_view text, std::size_t number) {
  while (--number > 0) text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
  return text.substr(0, text.find('\n'));
}

// What to write in place of a line that the format does not have.
std::string advice_for(std::string_view problem, std::string_view line) {
  if (problem.find("cannot redefine") != std::string_view::npos) return "each key stands there once";
  const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
  const Key* key = find_key(line.substr(begin, line.find_first_of(" \t=", begin) - begin));
  return fmt::format("a right line is {} = {}", key ? key->name : kKeys[1].name, key ? key->value : kKeys[1].value);
}

// Nothing, and the fault, for text that is not of the format.
std::optional<toml::table> parse_once(const std::string& text, Faults* faults) {
  try {
    // With any letter for each of them first: then the characters' places are known to be those of the format.
    std::string in_ascii = text;
    std::ranges::replace_if(in_ascii, is_beyond_ascii, 'x');
    if (in_ascii != text) (void)toml::parse(in_ascii);
    if (auto fault = check_characters(text)) {
      faults->push_back(std::move(*fault));
      return std::nullopt;
    }
    return toml::parse(text);
  } catch (const toml::parse_error& problem) {
    const auto place = problem.source().begin;
    faults->push_back(fault_at(place, fmt::format("{}; {}", problem.description(),
                                                  advice_for(problem.description(), line_of(text, place.line)))));
    return std::nullopt;
  }
}

// Whether the lines from there on can be read without that one: it is no part of a value, and begins none, that has
// several lines.
bool stands_alone(const std::string& text, std::string_view line) {
  Faults in_front;
  const auto begin = static_cast<std::size_t>(line.data() - text.data());
  if (line.find_first_not_of(" \t\r") == line.npos || !parse_once(text.substr(0, begin), &in_front)) return false;
  return std::ranges::count(line, '[') == std::ranges::count(line, ']') && line.find("\"\"\"") == line.npos &&
         line.find("'''") == line.npos;
}

// The library ends with the first line that it cannot read.
toml::table parse_text(std::string text, Faults* faults) {
  constexpr std::size_t kMost = 20;
  for (;;) {
    if (auto table = parse_once(text, faults)) return std::move(*table);
    const std::string_view line = line_of(text, static_cast<std::size_t>(faults->back().line));
    if (faults->size() == kMost || !stands_alone(text, line)) return {};
    text.replace(static_cast<std::size_t>(line.data() - text.data()), line.size(), line.size(), ' ');
  }
}

toml::table parse(const std::string& name, Faults* faults) {
  std::error_code error;
  const auto status = std::filesystem::status(name, error);
  if (status.type() == std::filesystem::file_type::not_found) return {};
  if (!error && !std::filesystem::is_regular_file(status)) throw WrongUse(name + " is not a file");
  std::ifstream in(name);
  if (!in) throw WrongUse(name + " cannot be read: " + std::generic_category().message(errno));
  std::string text{std::istreambuf_iterator<char>(in), {}};
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return parse_text(std::move(text), faults);
}

}  // namespace

WrongConfiguration::WrongConfiguration(const std::string& name, Faults found)
    : WrongUse(plain_line(fmt::format(
          "{}:{}: {}{}", name, found.front().line, found.front().text,
          found.size() == 1 ? "" : fmt::format(" (and {} more: zelto check tells them)", found.size() - 1)))),
      faults(std::move(found)) {}

class ConfigurationFile::Impl {
 public:
  explicit Impl(const std::string& file) : name(file), table(parse(file, &faults)) {}

  void refuse(std::string_view key, std::string_view what) {
    const toml::node* const value = table.get(key);
    faults.push_back(
        fault_at(value->source().begin, fmt::format("{} {}; a right one is {}", key, what, find_key(key)->value)));
  }
  void refuse_type(std::string_view key) { refuse(key, "has a value of the wrong type"); }
  void refuse_unknown(const toml::key& key, const toml::node& value) {
    std::string what;
    if (value.is_table() || value.is_array_of_tables()) {
      what = fmt::format("is a table, and this file has none; a right line is {} = {}", kKeys[1].name, kKeys[1].value);
    } else {
      std::vector<std::string> known;
      known.reserve(kKeys.size());
      for (const Key& one : kKeys) known.emplace_back(one.name);
      const std::string meant = suggestion(known, key.str());
      what = fmt::format("is not known; {}{}zelto serve --help lists what is", meant, meant.empty() ? "" : " ");
    }
    faults.push_back(fault_at(key.source().begin, fmt::format("{} {}", key.str(), what)));
  }
  template <class Value>
  std::optional<Value> get(std::string_view key) {
    const auto node = table[key];
    if (!node) return std::nullopt;
    auto value = node.template value_exact<Value>();
    if (!value) refuse_type(key);
    return value;
  }

  const std::string name;
  Faults faults;
  const toml::table table;
};

ConfigurationFile::ConfigurationFile(const std::string& name) : impl_(std::make_unique<Impl>(name)) {
  for (const auto& [key, value] : impl_->table)
    if (!find_key(key.str())) impl_->refuse_unknown(key, value);
}

ConfigurationFile::~ConfigurationFile() = default;

void ConfigurationFile::refuse(std::string_view key, std::string_view what) const { impl_->refuse(key, what); }

void ConfigurationFile::throw_faults() const {
  if (impl_->faults.empty()) return;
  Faults faults = impl_->faults;
  std::ranges::stable_sort(faults, {}, &ConfigurationFault::line);
  throw WrongConfiguration(impl_->name, std::move(faults));
}

std::optional<bool> ConfigurationFile::flag(std::string_view key) const { return impl_->get<bool>(key); }

std::optional<std::string> ConfigurationFile::text(std::string_view key) const { return impl_->get<std::string>(key); }

std::optional<std::vector<std::string>> ConfigurationFile::texts(std::string_view key) const {
  const auto node = impl_->table[key];
  if (!node) return std::nullopt;
  const toml::array* list = node.as_array();
  std::vector<std::string> values;
  bool is_right = list != nullptr;
  for (std::size_t i = 0; is_right && i < list->size(); ++i) {
    const auto text = (*list)[i].value_exact<std::string>();
    is_right = text.has_value();
    if (is_right) values.push_back(*text);
  }
  if (!is_right) impl_->refuse_type(key);
  return is_right ? std::optional(std::move(values)) : std::nullopt;
}

std::optional<std::int64_t> ConfigurationFile::number(std::string_view key, std::int64_t least,
                                                      std::int64_t most) const {
  const auto value = impl_->get<std::int64_t>(key);
  if (!value || (*value >= least && *value <= most)) return value;
  refuse(key, fmt::format("is a number from {} to {}", least, most));
  return std::nullopt;
}

std::string ConfigurationFile::help() {
  std::string lines;
  for (const Key& key : kKeys)
    lines += fmt::format("  {:<38}# {}\n", fmt::format("{} = {}", key.name, key.value), key.meaning);
  return lines;
}

}  // namespace zelto
