// Any bytes as a zelto.toml: what cannot be understood is told in one line with the file's name, the line and words;
// every setting lies in its range, and the settings, written down, are read as they are.
#include "app/configuration.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "app/command_line.h"
#include "support/temporary_folder.h"
#include "text/characters.h"
#include "text_input.h"

namespace {

using zelto::Configuration;

struct Site {
  Site() { command.site = folder.path().string(); }
  const test::TemporaryFolder folder;
  zelto::ServeCommand command;
};

struct Read {
  std::optional<Configuration> made;
  std::string fault;
};

Read read(const Site& site, std::string_view text) {
  site.folder.write("zelto.toml", text);
  try {
    return {zelto::read_configuration(site.command), {}};
  } catch (const zelto::WrongUse& error) {
    return {std::nullopt, error.what()};
  }
}

// "/site/zelto.toml:3: KEY WHAT"
void check_fault(const Site& site, std::string_view text, std::string_view fault) {
  const std::string begin = site.command.site + "/zelto.toml:";
  fuzz::require(fault.starts_with(begin), "a fault names the file");
  fault.remove_prefix(begin.size());
  long line = 0;
  const auto digits = std::from_chars(fault.data(), fault.data() + fault.size(), line);
  const long lines = 1 + std::ranges::count_if(text, [](char c) { return c == '\n' || c == '\r'; });
  fuzz::require(digits.ec == std::errc() && line >= 1 && line <= lines, "and the line");
  fault.remove_prefix(static_cast<std::size_t>(digits.ptr - fault.data()));
  fuzz::require(fault.starts_with(": ") && fault.size() > 10, "in words");
  for (std::string_view rest = fault; !rest.empty(); rest.remove_prefix(1))
    fuzz::require(zelto::control_length(rest) == 0, "that are one line, and steer no terminal");
}

std::string in_quotes(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\')
      out.append(1, '\\').append(1, c);
    else if (zelto::is_control(c))
      out += fmt::format("\\u{:04X}", static_cast<unsigned char>(c));
    else
      out += c;
  }
  return out + '"';
}

std::string list_of(const std::vector<std::string>& texts) {
  std::string out = "[";
  for (const std::string& text : texts) out += in_quotes(text) + ",";
  return out + "]";
}

// Every key but "protect", whose names are kept in groups.
std::string written(const Configuration& made) {
  const auto& [site, server, log, stop_timeout, supervise, hang_timeout] = made;
  std::string text = fmt::format("listen = \"[{}]:{}\"\n", server.address, server.port);
  const auto add = [&text](std::string_view key, const auto& value) { text += fmt::format("{}={}\n", key, value); };
  add("workers", server.workers);
  add("body_limit", server.limits.body_bytes);
  add("upload_parts", server.limits.upload_parts);
  add("underscore_headers", server.limits.takes_underscores);
  add("script_timeout", site.script_timeout.count());
  add("script_memory", site.script_memory);
  add("stop_timeout", stop_timeout.count());
  add("supervise", supervise);
  add("hang_timeout", hang_timeout.count());
  add("session_timeout", site.session_timeout);
  add("session_limit", site.session_limit);
  add("session_queue", server.turn_queue);
  if (!site.session_suffix.empty()) add("session_node", in_quotes(site.session_suffix.substr(1)));
  add("default_documents", list_of(site.files.default_documents));
  add("unknown_types", in_quotes(site.files.refuses_unknown_types ? "refuse" : "download"));
  add("trusted_proxies", list_of(server.trusted_proxies));
  add("connections", server.limits.connections);
  if (server.limits.limits_loopback) add("connections_per_address", server.limits.connections_per_address);
  add("buffer_memory", server.spool.memory_bytes);
  add("spool_limit", server.spool.file_bytes);
  if (server.spool.folder != zelto::SpoolLimits().folder) add("spool_folder", in_quotes(server.spool.folder));
  if (!log.empty()) add("log", in_quotes(log));
  add("debug", site.debug);
  return text;
}

bool is_within(auto value, auto least, auto most) { return value >= least && value <= most; }

void check_ranges(const Configuration& made) {
  const auto& [site, server, log, stop_timeout, supervise, hang_timeout] = made;
  fuzz::require(is_within(server.workers, 1U, 1024U), "workers");
  fuzz::require(is_within(server.limits.upload_parts, 1U, 10'000'000U), "parts");
  fuzz::require(is_within(server.limits.connections, 1U, 1'000'000U), "connections");
  fuzz::require(server.limits.connections_per_address <= 1'000'000, "connections of an address");
  fuzz::require(server.limits.body_bytes <= std::uint64_t{1} << 40, "bytes of a body");
  fuzz::require(is_within(site.script_timeout.count(), 1, 86400), "seconds of a page");
  fuzz::require(is_within(site.script_memory, std::size_t{1} << 24, std::size_t{1} << 40), "bytes of a page");
  fuzz::require(is_within(site.session_timeout, 1, 1440), "minutes of a session");
  fuzz::require(is_within(site.session_limit, 1U, 10'000'000U), "sessions");
  fuzz::require(server.turn_queue <= 1000, "waiting requests");
  fuzz::require(is_within(stop_timeout.count(), 0, 3600) && is_within(hang_timeout.count(), 0, 3600), "seconds");
  fuzz::require(site.session_suffix.empty() || site.session_suffix.size() > 1, "a node has a name");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Site site;
  const std::string text(reinterpret_cast<const char*>(data), size);
  Read found = read(site, text);
  if (!found.made) {
    check_fault(site, text, found.fault);
    return 0;
  }
  check_ranges(*found.made);
  const Read remarked = read(site, text + "\n# a remark = \"\n");
  fuzz::require(remarked.made && written(*remarked.made) == written(*found.made), "a remark changes nothing");
  Read again = read(site, written(*found.made));
  fuzz::require(again.made && written(*again.made) == written(*found.made), "what is written so is read so");
  fuzz::require(keep_until_restart(*again.made, *found.made).empty(), "nothing of it takes a restart");
  return 0;
}
