#include <fmt/format.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <korlib/activation.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/modules.h>

#include "app/commands.h"
#include "app/configuration.h"
#include "app/connection_room.h"
#include "app/last_resort.h"
#include "app/runtime.h"
#include "app/session_sweeper.h"
#include "app/site_worker.h"
#include "http/access_log.h"

namespace zelto {

namespace {

// The signals that end the program, blocked in every thread that is started while this lives.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&set_);
    sigaddset(&set_, SIGINT);
    sigaddset(&set_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set_, &before_);
  }
  ~EndSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  void wait() const {
    int signal = 0;
    sigwait(&set_, &signal);
  }
  // From now on another one ends the program at once.
  void let_through() const { pthread_sigmask(SIG_UNBLOCK, &set_, nullptr); }

 private:
  sigset_t set_{};
  sigset_t before_{};
};

// Whole lines, whichever thread writes them.
class Log {
 public:
  void line(std::string_view text) {
    const std::string whole = std::string(text) + '\n';  // written at once: other programs may write there too
    const std::scoped_lock guard(mutex_);
    std::cerr << whole;
  }

 private:
  std::mutex mutex_;
};

std::string shown_address(const ServerOptions& options, std::uint16_t port) {
  const bool is_v6 = options.address.find(':') != std::string::npos;
  const std::string host = is_v6 ? "[" + options.address + "]" : options.address;
  return fmt::format("http://{}:{}/", host, port);
}

void make_room(HttpLimits& limits, Log& log) {
  const std::size_t fit = make_room_for_connections(limits.connections);
  if (fit < limits.connections) {
    log.line(fmt::format("zelto: {} connections at a time in place of {}: the limit of open files (ulimit -n) is low",
                         fit, limits.connections));
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

[[noreturn]] void end_at_once(Log& log) {
  log.line("zelto: ending without pages that still run after stop_timeout");
  ::_exit(kFailure);
}

// Once workers, sessions and the application have gone, no object may be alive and no module in use.
bool nothing_is_left(Log& log) {
  CoFreeUnusedLibraries();
  const auto objects = korlib_host::live_objects();
  const auto modules = korlib_host::open_modules();
  if (objects == 0 && modules == 0) return true;
  log.line(fmt::format("zelto: {} objects are still alive, {} component modules in use", objects, modules));
  return false;
}

}  // namespace

int serve_site(const ServeCommand& command) {
  constexpr auto kSweepPause = std::chrono::seconds(15);
  constexpr auto kForce = std::chrono::seconds(2);  // for pages that notice that their client has gone
  std::error_code error;
  if (!std::filesystem::is_directory(command.site, error)) throw WrongUse("'" + command.site + "' is no folder");
  set_up_runtime();
  Log log;
  Configuration configuration = read_configuration(command);
  configuration.site.log = [&log](std::string_view line) { log.line(line); };
  configuration.server.on_access = [&log](const AccessRecord& record) { log.line(combined_line(record)); };
  make_room(configuration.server.limits, log);
  std::signal(SIGPIPE, SIG_IGN);
  const EndSignals signals;
  bool all_answered = false;
  std::optional<LastResort> last_resort;
  {
    Site site(configuration.site);
    const SessionSweeper sweeper(site.sessions(), kSweepPause, configuration.site.log);
    Server server(configuration.server, [&site] { return std::make_unique<SiteWorker>(site); });
    start(server);
    std::cout << "Serving " << site.root() << " at " << shown_address(configuration.server, server.port()) << std::endl;
    signals.wait();
    std::cout << "Stopping once every request is answered, or when asked again" << std::endl;
    signals.let_through();
    last_resort.emplace(configuration.stop_timeout + kForce, [&log] { end_at_once(log); });
    all_answered = server.stop(configuration.stop_timeout);
  }
  if (!nothing_is_left(log)) return kLeftOver;
  return all_answered ? kSuccess : kFailure;
}

}  // namespace zelto
