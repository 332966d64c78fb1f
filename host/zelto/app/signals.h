// What an operator says to the running host by signals.
#pragma once

#include <chrono>
#include <csignal>
#include <optional>

namespace zelto {

// SIGTERM and SIGINT end it, SIGHUP makes it read its settings again. Signals that mean nothing to it, SIGUSR1 and
// SIGALRM among them, are ignored. Left as they are: SIGQUIT, SIGABRT and those of faults, which leave a core file, and
// SIGKILL.
// The first three are blocked in every thread that is started while this lives.
class OperatorSignals {
 public:
  enum class Wish { end, end_soon, reread };  // end_soon is its supervisor's: without a page that does not end

  OperatorSignals();
  ~OperatorSignals();
  OperatorSignals(const OperatorSignals&) = delete;
  OperatorSignals& operator=(const OperatorSignals&) = delete;

  Wish wait() const;

  // For a program that has child processes. First await_children(); then, in place of wait(): what is asked for, or
  // nothing after that time or when a child may have ended.
  void await_children();
  std::optional<Wish> wait_for(std::chrono::milliseconds time) const;
  void wait_for_child(std::chrono::milliseconds time) const;
  // In a child, which those that end or reread are not for.
  void enter_child() const;

  // From now on another SIGTERM or SIGINT ends the program at once, and SIGHUP is ignored.
  void let_end_through() const;

 private:
  sigset_t awaited_{};
  sigset_t before_{};
};

}  // namespace zelto
