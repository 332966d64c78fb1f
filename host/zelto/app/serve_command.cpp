#include "app/serve_command.h"

#include <fmt/format.h>
#include <korlib/activation.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/modules.h>
#include <spdlog/logger.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "app/command_line.h"
#include "app/configuration.h"
#include "app/log_sink.h"
#include "app/open_file_limit.h"
#include "app/runtime.h"
#include "app/signals.h"
#include "base/thread.h"
#include "http/server.h"
#include "site/session_sweeper.h"
#include "site/site_router.h"
#include "site/site_worker.h"

namespace zelto {

namespace {

std::string shown_address(const ServerOptions& options, std::uint16_t port) {
  const bool is_v6 = options.address.find(':') != std::string::npos;
  const std::string host = is_v6 ? "[" + options.address + "]" : options.address;
  return fmt::format("http://{}:{}/", host, port);
}

void limit_connections(HttpLimits& limits, spdlog::logger& log) {
  const std::size_t fit = raise_open_file_limit(limits.connections);
  if (fit < limits.connections) {
    log.info("zelto: {} connections at a time in place of {}: the limit of open files (ulimit -n) is low", fit,
             limits.connections);
  }
  limits.connections = fit;
}

void start(Server& server) {
  try {
    server.start();
  } catch (const std::system_error& error) {
    std::string_view advice;
    if (error.code() == std::errc::address_in_use) advice = "; --listen, or listen in zelto.toml, takes another one";
    if (error.code() == std::errc::permission_denied) advice = "; ports below 1024 take CAP_NET_BIND_SERVICE";
    throw std::runtime_error(error.what() + std::string(advice));
  }
}

// A site that was written for another host may rely on what this one does not do.
void give_notice(const Site& site, spdlog::logger& log, bool log_is_file) {
  const std::string notice = site.notice();
  if (notice.empty()) return;
  log.info(notice);
  if (log_is_file) std::cerr << notice << std::endl;
}

// Applies what zelto.toml says now, as far as that goes without a restart.
void reread(const ServeCommand& command, Configuration& running, Site& site, Server& server, LogSink& sink,
            spdlog::logger& log) {
  try {
    Configuration fresh = read_configuration(command);
    const auto kept = keep_until_restart(fresh, running);
    sink.open(fresh.log);
    site.change(fresh.site);
    server.change(fresh.server.limits, fresh.server.trusted_proxies);
    running = std::move(fresh);
    log.info("zelto: zelto.toml is read again");
    for (const std::string_view key : kept) log.info("zelto: {} takes a restart to change", key);
  } catch (const std::exception& error) {
    try {
      sink.open(running.log);
    } catch (const std::exception& gone) {
      log.info("zelto: {}", gone.what());
    }
    log.info("zelto: {}; the settings stay as they were", error.what());
  }
}

// A page may loop, or wait for a database, long after its client has been told goodbye: a thread cannot be stopped
// from outside, but the program can.
void exit_after(std::chrono::milliseconds patience, const std::stop_token& stop, spdlog::logger& log) {
  if (!base::wait_unless_stopped(stop, patience)) return;
  log.info("zelto: ending without pages that still run after stop_timeout");
  ::_exit(kFailure);
}

// Once workers, sessions and the application have gone, no object may be alive and no module in use.
bool nothing_is_left(spdlog::logger& log) {
  CoFreeUnusedLibraries();
  const auto objects = korlib_host::live_objects();
  const auto modules = korlib_host::open_modules();
  if (objects == 0 && modules == 0) return true;
  log.info("zelto: {} objects are still alive, {} component modules in use", objects, modules);
  return false;
}

}  // namespace

int serve_site(const ServeCommand& command) {
  constexpr auto kSweepPause = std::chrono::seconds(15);
  constexpr auto kForce = std::chrono::seconds(2);  // for pages that notice that their client has gone
  std::error_code error;
  if (!std::filesystem::is_directory(command.site, error)) throw WrongUse("'" + command.site + "' is not a folder");
  const OperatorSignals signals;
  set_up_runtime();
  const auto sink = std::make_shared<LogSink>();
  spdlog::logger log("zelto", sink);
  Configuration configuration = read_configuration(command);
  sink->open(configuration.log);
  configuration.site.log = [&log](std::string_view line) { log.info(line); };
  configuration.server.on_problem = [&log](std::string_view problem) { log.info("zelto: {}", problem); };
  configuration.server.on_access = [&log](const AccessRecord& record) { log.info(combined_line(record)); };
  limit_connections(configuration.server.limits, log);
  bool all_answered = false;
  std::jthread exit_timer;
  {
    Site site(configuration.site);
    const SessionSweeper sweeper(site.sessions(), kSweepPause, configuration.site.log);
    SiteRouter router(site);
    Server server(
        configuration.server, [&site] { return std::make_unique<SiteWorker>(site); }, &router);
    start(server);
    give_notice(site, log, !configuration.log.empty());
    std::cout << "Serving " << site.root() << " at " << shown_address(configuration.server, server.port()) << std::endl;
    while (signals.wait() == OperatorSignals::Wish::reread) reread(command, configuration, site, server, *sink, log);
    std::cout << "Stopping once every request is answered, or when asked again" << std::endl;
    signals.let_end_through();
    exit_timer = std::jthread([&log, patience = configuration.stop_timeout + kForce](const std::stop_token& stop) {
      exit_after(patience, stop, log);
    });
    all_answered = server.stop(configuration.stop_timeout);
  }
  if (!nothing_is_left(log)) return kLeftOver;
  return all_answered ? kSuccess : kFailure;
}

}  // namespace zelto
