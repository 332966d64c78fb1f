// What an operator says to the running host by signals.
#pragma once

#include <csignal>

namespace zelto {

// SIGTERM and SIGINT end it, SIGHUP has it read its settings again, and what others mean as a message to programs that
// know it, SIGUSR1 and SIGALRM among them, does nothing. Left as they are: SIGQUIT, SIGABRT and those of faults, which
// leave a core file, and SIGKILL.
// The first three are blocked in every thread that is started while this lives.
class OperatorSignals {
 public:
  enum class Wish { kEnd, kReread };

  OperatorSignals();
  ~OperatorSignals();
  OperatorSignals(const OperatorSignals&) = delete;
  OperatorSignals& operator=(const OperatorSignals&) = delete;

  Wish wait() const;
  // From now on another signal to end does so at once; to read settings is too late.
  void let_end_through() const;

 private:
  sigset_t awaited_{};
  sigset_t before_{};
};

}  // namespace zelto
