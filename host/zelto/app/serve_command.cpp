#include "app/serve_command.h"

#include <fmt/format.h>
#include <spdlog/logger.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "app/command_line.h"
#include "app/configuration.h"
#include "app/log_sink.h"
#include "app/open_file_limit.h"
#include "app/reread.h"
#include "app/server_process.h"
#include "app/signals.h"
#include "app/supervisor.h"
#include "app/vitals.h"
#include "http/listening_socket.h"

namespace zelto {

namespace {

void limit_connections(HttpLimits& limits, spdlog::logger& log) {
  const std::size_t fit = raise_open_file_limit(limits.connections);
  if (fit < limits.connections) {
    log.info("zelto: {} connections at a time in place of {}: the limit of open files (ulimit -n) is low", fit,
             limits.connections);
  }
  limits.connections = fit;
}

base::FileDescriptor listen(const ServerOptions& options) {
  try {
    return listen_on(options.address, options.port);
  } catch (const std::system_error& error) {
    std::string_view advice;
    if (error.code() == std::errc::address_in_use) advice = "; --listen, or listen in zelto.toml, takes another one";
    if (error.code() == std::errc::permission_denied) advice = "; ports below 1024 take CAP_NET_BIND_SERVICE";
    throw std::runtime_error(error.what() + std::string(advice));
  }
}

void say_stopping() { say("Stopping once every request is answered, or when asked again"); }

}  // namespace

int serve_site(const ServeCommand& command) {
  std::error_code error;
  if (!std::filesystem::is_directory(command.site, error)) throw WrongUse("'" + command.site + "' is not a folder");
  OperatorSignals signals;
  const auto sink = std::make_shared<LogSink>();
  spdlog::logger log("zelto", sink);
  Configuration configuration = read_configuration(command);
  sink->open(configuration.log);
  limit_connections(configuration.server.limits, log);
  base::FileDescriptor listener = listen(configuration.server);
  const auto serve = [&](const ServerOrders& orders) {
    configuration.server.listening_socket = listener.release();
    return run_server(command, configuration, *sink, log, orders);
  };
  if (!configuration.supervise) {
    return serve({[&signals] { return signals.wait(); },
                  [&signals] {
                    say_stopping();
                    signals.let_end_through();
                  }});
  }
  sink->set_when_full(LogSink::WhenFull::lose);  // the supervisor waits for nobody, and has no threads
  Vitals vitals(configuration.server.workers);
  Supervisor supervisor(configuration, vitals, signals, log);
  Supervised supervised;
  supervised.serve = [&] { return serve({[&supervisor] { return supervisor.next_wish(); }, [] {}, &vitals}); };
  supervised.reread = [&](bool server_runs) {
    const auto told = reread(command, configuration, *sink, [](const Configuration&) {});
    if (server_runs) return;  // which says the same
    for (const std::string& line : told) log.info(line);
  };
  supervised.say_stopping = say_stopping;
  supervised.close_listening = [&listener] { listener.close(); };
  return supervisor.run(supervised);
}

}  // namespace zelto
