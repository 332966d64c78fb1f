#include "app/configuration.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <thread>

#include "app/command_line.h"
#include "app/configuration_file.h"
#include "site/page_run.h"

namespace zelto {

namespace {

struct NoListenAddress : WrongUse {
  using WrongUse::WrongUse;
};

bool is_address(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return !error;
}

void read_site(const ConfigurationFile& file, SiteOptions& site) {
  if (const auto name = file.text("language")) {
    const auto language = pages::language_of(to_wide(*name));
    if (!language) file.refuse("language", "is \"JavaScript\" or \"VBScript\"");
    site.language = language.value_or(site.language);
  }
  site.debug = file.flag("debug").value_or(false);
  site.debug_panel = file.flag("debug_panel").value_or(false);
  if (const auto limit = file.number("script_timeout", 1, 86400)) site.script_timeout = std::chrono::seconds(*limit);
  if (const auto minutes = file.number("session_timeout", 1, 1440)) {
    site.session_timeout = static_cast<LONG>(*minutes);
  }
  const auto memory = file.number("script_memory", std::int64_t{1} << 24, std::int64_t{1} << 40);
  if (memory) site.script_memory = static_cast<std::size_t>(*memory);
  const auto kept = file.number("kept_memory", std::int64_t{1} << 24, std::int64_t{1} << 50);
  if (kept) site.kept_memory = static_cast<std::size_t>(*kept);
  const auto limit = file.number("session_limit", 1, 10'000'000);
  if (limit) site.session_limit = static_cast<std::size_t>(*limit);
  if (const auto node = file.text("session_node")) {
    const auto is_plain = [](unsigned char c) { return std::isalnum(c) != 0; };
    if (node->empty() || !std::ranges::all_of(*node, is_plain)) file.refuse("session_node", "takes letters and digits");
    site.session_suffix = "." + *node;
  }
  if (auto names = file.texts("default_documents")) {
    const auto is_name = [](const std::string& name) {
      return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
    };
    if (!std::ranges::all_of(*names, is_name)) file.refuse("default_documents", "takes names of files");
    site.files.default_documents = std::move(*names);
  }
  if (const auto unknown = file.text("unknown_types")) {
    if (*unknown != "download" && *unknown != "refuse") file.refuse("unknown_types", "is \"download\" or \"refuse\"");
    site.files.refuses_unknown_types = *unknown == "refuse";
  }
  const auto protect = file.texts("protect").value_or(std::vector<std::string>());
  const auto add = [&site](const std::string& name) { return site.files.protected_names.add(name); };
  if (!std::ranges::all_of(protect, add)) file.refuse("protect", "takes \"folder/\", \"*.extension\" or \"file\"");
}

void read_listen(const ConfigurationFile& file, ServerOptions& server) {
  try {
    set_listen_address(file.text("listen").value_or("127.0.0.1:8080"), server);
  } catch (const NoListenAddress& error) {
    file.refuse("listen", std::string("names no place to serve: ") + error.what());
  }
}

void read_server(const ConfigurationFile& file, ServerOptions& server) {
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 40;
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  read_listen(file, server);
  server.workers = static_cast<unsigned>(file.number("workers", 1, 1024).value_or(std::int64_t{2} * cores));
  server.worker_stack = kPageStack;
  const auto limit = file.number("body_limit", 0, kMostBytes);
  if (limit) server.limits.body_bytes = static_cast<std::uint64_t>(*limit);
  const auto parts = file.number("upload_parts", 1, 10'000'000);
  if (parts) server.limits.upload_parts = static_cast<std::size_t>(*parts);
  server.limits.takes_underscores = file.flag("underscore_headers").value_or(false);
  const auto connections = file.number("connections", 1, 1'000'000);
  if (connections) server.limits.connections = static_cast<std::size_t>(*connections);
  const auto per_address = file.number("connections_per_address", 0, 1'000'000);
  if (per_address) server.limits.connections_per_address = static_cast<std::size_t>(*per_address);
  server.limits.limits_loopback = per_address.has_value();
  if (const auto queue = file.number("session_queue", 0, 1000)) server.turn_queue = static_cast<std::size_t>(*queue);
  const auto proxies = file.texts("trusted_proxies").value_or(std::vector<std::string>());
  if (!std::ranges::all_of(proxies, is_address)) return file.refuse("trusted_proxies", "takes addresses");
  for (const std::string& proxy : proxies)
    server.trusted_proxies.push_back(boost::asio::ip::make_address(proxy).to_string());
}

void read_spool(const ConfigurationFile& file, const std::string& site, SpoolLimits& spool) {
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 50;
  if (const auto bytes = file.number("buffer_memory", 0, kMostBytes)) {
    spool.memory_bytes = static_cast<std::uint64_t>(*bytes);
  }
  if (const auto bytes = file.number("spool_limit", 0, kMostBytes))
    spool.file_bytes = static_cast<std::uint64_t>(*bytes);
  const auto folder = file.text("spool_folder");
  if (!folder) return;
  spool.folder = std::filesystem::path(site) / *folder;
  std::error_code error;
  if (folder->empty() || !std::filesystem::is_directory(spool.folder, error))
    file.refuse("spool_folder", "is not a folder");
}

// The file's name, relative to the site's folder. A log that lies in there is not served to anyone.
std::string read_log(const ConfigurationFile& file, const std::string& site, ProtectedNames& protected_names) {
  const auto name = file.text("log");
  if (!name) return {};
  const std::filesystem::path path = std::filesystem::path(site) / *name;
  std::error_code error;
  if (!path.has_filename())
    file.refuse("log", "takes the name of a file");
  else if (!std::filesystem::is_directory(path.parent_path(), error))
    file.refuse("log", "is in a folder that there is not");
  protected_names.add(path.filename().string());
  return path.string();
}

}  // namespace

std::vector<std::string_view> keep_until_restart(Configuration& fresh, const Configuration& running) {
  std::vector<std::string_view> keys;
  const auto keep = [&keys](std::string_view key, auto& wanted, const auto& present) {
    if (wanted != present && (keys.empty() || keys.back() != key)) keys.push_back(key);
    wanted = present;
  };
  keep("listen", fresh.server.address, running.server.address);
  keep("listen", fresh.server.port, running.server.port);
  keep("workers", fresh.server.workers, running.server.workers);
  keep("connections", fresh.server.limits.connections, running.server.limits.connections);
  keep("connections_per_address", fresh.server.limits.connections_per_address,
       running.server.limits.connections_per_address);
  keep("session_queue", fresh.server.turn_queue, running.server.turn_queue);
  keep("buffer_memory", fresh.server.spool.memory_bytes, running.server.spool.memory_bytes);
  keep("spool_limit", fresh.server.spool.file_bytes, running.server.spool.file_bytes);
  keep("spool_folder", fresh.server.spool.folder, running.server.spool.folder);
  keep("language", fresh.site.language, running.site.language);
  keep("session_node", fresh.site.session_suffix, running.site.session_suffix);
  keep("supervise", fresh.supervise, running.supervise);
  return keys;
}

void set_listen_address(const std::string& text, ServerOptions& options) {
  const std::size_t colon = text.rfind(':');
  std::string address = text.substr(0, colon == std::string::npos ? 0 : colon);
  const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
  if (address.starts_with('[') && address.ends_with(']')) address = address.substr(1, address.size() - 2);
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), options.port);
  if (port.empty() || error != std::errc{} || end != port.data() + port.size()) {
    throw NoListenAddress("'" + text + "' is not an ADDRESS:PORT");
  }
  if (colon == std::string::npos || address == "localhost") address = "127.0.0.1";
  options.address = colon == 0 ? "0.0.0.0" : address;
  if (!is_address(options.address)) throw NoListenAddress("'" + address + "' is not an address to listen on");
}

Configuration read_configuration(const ServeCommand& command) {
  const ConfigurationFile file(command.site + "/zelto.toml");
  Configuration made;
  made.site.root = command.site;
  read_site(file, made.site);
  made.site.debug |= command.debug;
  read_server(file, made.server);
  read_spool(file, command.site, made.server.spool);
  made.log = read_log(file, command.site, made.site.files.protected_names);
  if (const auto limit = file.number("stop_timeout", 0, 3600)) made.stop_timeout = std::chrono::seconds(*limit);
  made.supervise = file.flag("supervise").value_or(true) && !command.no_supervisor;
  if (const auto limit = file.number("hang_timeout", 0, 3600)) made.hang_timeout = std::chrono::seconds(*limit);
  file.throw_faults();
  try {
    if (command.listen) set_listen_address(*command.listen, made.server);
  } catch (const NoListenAddress& error) {
    throw WrongUse(std::string("--listen: ") + error.what() + "; a right one is 127.0.0.1:8080");
  }
  if (command.workers) made.server.workers = *command.workers;
  if (command.body_limit) made.server.limits.body_bytes = *command.body_limit;
  return made;
}

}  // namespace zelto
