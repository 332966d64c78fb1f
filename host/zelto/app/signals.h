// What an operator says to the running host by signals.
#pragma once

#include <csignal>

namespace zelto {

// SIGTERM and SIGINT end it, SIGHUP makes it read its settings again. Signals that mean nothing to it, SIGUSR1 and
// SIGALRM among them, are ignored. Left as they are: SIGQUIT, SIGABRT and those of faults, which leave a core file, and
// SIGKILL.
// The first three are blocked in every thread that is started while this lives.
class OperatorSignals {
 public:
  enum class Wish { end, reread };

  OperatorSignals();
  ~OperatorSignals();
  OperatorSignals(const OperatorSignals&) = delete;
  OperatorSignals& operator=(const OperatorSignals&) = delete;

  Wish wait() const;
  // From now on another SIGTERM or SIGINT ends the program at once, and SIGHUP is ignored.
  void let_end_through() const;

 private:
  sigset_t awaited_{};
  sigset_t before_{};
};

}  // namespace zelto
