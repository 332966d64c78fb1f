// The process that serves: the site behind its server, from start to end.
#pragma once

#include <spdlog/logger.h>

#include <functional>
#include <string_view>

#include "app/configuration.h"
#include "app/log_sink.h"
#include "app/signals.h"
#include "app/vitals.h"

namespace zelto {

// Who tells the server what to do, and whom it shows that it lives.
struct ServerOrders {
  std::function<OperatorSignals::Wish()> next_wish;
  std::function<void()> on_end;  // called as soon as the end is wished for
  Vitals* vitals = nullptr;      // none without a supervisor
};

// Serves until it is told to end. The exit code; throws what keeps the server from starting. The listening socket that
// the configuration names is taken over.
int run_server(const ServeCommand& command, Configuration& configuration, LogSink& sink, spdlog::logger& log,
               const ServerOrders& orders);

// A line on standard output, if that takes it.
void say(std::string_view line);

}  // namespace zelto
