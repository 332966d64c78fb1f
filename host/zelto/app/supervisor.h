// Keeps a server running: in a process of its own, which is started again when it dies or hangs.
#pragma once

#include <spdlog/logger.h>
#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/configuration.h"
#include "app/restart_pause.h"
#include "app/signals.h"
#include "app/vitals.h"
#include "base/file_descriptor.h"

namespace zelto {

// What the supervisor leaves to others, each called in the process that is named.
struct Supervised {
  std::function<int()> serve;             // the server's: until it is told to end; answers the exit code
  std::function<void(bool)> reread;       // the supervisor's: the settings, with or without a server that does the same
  std::function<void()> say_stopping;     // the supervisor's
  std::function<void()> close_listening;  // the supervisor's: nobody new is to be served
};

// The operator's signals are for the supervisor, which tells the server. The server's process ignores them: whoever
// sends them to both, as a terminal does, is heard once.
class Supervisor {
 public:
  // Both outlive it; the configuration is looked at anew each time.
  Supervisor(const Configuration& configuration, Vitals& vitals, OperatorSignals& signals, spdlog::logger& log);

  // Makes processes, so there must be no other thread. Returns in both kinds of process, with its exit code; what
  // `serve` throws is thrown in the server's. A server that was never ready is not started again.
  int run(const Supervised& supervised);

  // In the server's process, what it is told to do next.
  OperatorSignals::Wish next_wish() const;

 private:
  using Duration = std::chrono::steady_clock::duration;
  struct Death {
    std::string how;                      // "was ended by SIGSEGV"
    int code;                             // that the program ends with if it was the last one
    std::vector<std::string> pages = {};  // that it ran when it was found to be unable to end one
  };

  bool start();
  void enter_server(pid_t supervisor);
  std::optional<Death> watch(const Supervised& supervised);
  bool pause(std::chrono::seconds time, const Supervised& supervised);
  int stop(const Supervised& supervised);
  void tell(char wish) const;
  std::optional<Death> reap(int options);
  Death kill();
  Death replace();
  void report(const Death& death, const std::string& consequence);

  const Configuration& configuration_;
  Vitals& vitals_;
  OperatorSignals& signals_;
  spdlog::logger& log_;
  RestartPause restart_pause_;
  base::FileDescriptor wishes_in_;   // the server's end
  base::FileDescriptor wishes_out_;  // the supervisor's
  pid_t server_ = -1;
  int start_error_ = 0;     // why there is none
  bool was_ready_ = false;  // any of them
};

}  // namespace zelto
