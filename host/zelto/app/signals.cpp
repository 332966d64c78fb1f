#include "app/signals.h"

#include <pthread.h>

#include <initializer_list>

namespace zelto {

namespace {

// A handler that is already installed stays: it may be a profiler's.
void ignore(int signal) {
  struct sigaction action {};
  if (::sigaction(signal, nullptr, &action) != 0) return;
  if ((action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_DFL) std::signal(signal, SIG_IGN);
}

sigset_t set_of(std::initializer_list<int> signals) {
  sigset_t set{};
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

timespec to_timespec(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  return {seconds.count(), std::chrono::nanoseconds(time - seconds).count()};
}

}  // namespace

OperatorSignals::OperatorSignals() : awaited_(set_of({SIGINT, SIGTERM, SIGHUP})) {
  pthread_sigmask(SIG_BLOCK, &awaited_, &before_);
  // SIGPIPE comes of a client that has gone, SIGXFSZ of a file that may not grow; the others only from elsewhere. The
  // script engine sees to its own.
  for (const int signal : {SIGPIPE, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF, SIGIO, SIGPWR, SIGXFSZ})
    ignore(signal);
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) ignore(signal);
}

OperatorSignals::~OperatorSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

OperatorSignals::Wish OperatorSignals::wait() const {
  int signal = 0;
  while (sigwait(&awaited_, &signal) != 0) continue;
  return signal == SIGHUP ? Wish::reread : Wish::end;
}

void OperatorSignals::await_children() {
  std::signal(SIGCHLD, SIG_DFL);    // ignored, it would have the system forget how they ended
  std::signal(SIGSTKFLT, SIG_IGN);  // the script engine's, which is not here
  sigaddset(&awaited_, SIGCHLD);
  pthread_sigmask(SIG_BLOCK, &awaited_, nullptr);
}

std::optional<OperatorSignals::Wish> OperatorSignals::wait_for(std::chrono::milliseconds time) const {
  const timespec limit = to_timespec(time);
  const int signal = ::sigtimedwait(&awaited_, nullptr, &limit);
  if (signal == SIGHUP) return Wish::reread;
  if (signal == SIGINT || signal == SIGTERM) return Wish::end;
  return std::nullopt;
}

void OperatorSignals::wait_for_child(std::chrono::milliseconds time) const {
  const timespec limit = to_timespec(time);
  const sigset_t child = set_of({SIGCHLD});
  ::sigtimedwait(&child, nullptr, &limit);
}

void OperatorSignals::enter_child() const {
  std::signal(SIGSTKFLT, SIG_DFL);
  // Blocked alone, one that came would end the process when the mask is put back.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
  const sigset_t child = set_of({SIGCHLD});
  pthread_sigmask(SIG_UNBLOCK, &child, nullptr);
}

void OperatorSignals::let_end_through() const {
  // A pending one too, which would end the program once it is unblocked.
  std::signal(SIGHUP, SIG_IGN);
  const sigset_t end = set_of({SIGINT, SIGTERM});
  pthread_sigmask(SIG_UNBLOCK, &end, nullptr);
}

}  // namespace zelto
