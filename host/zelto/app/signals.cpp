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

}  // namespace

OperatorSignals::OperatorSignals() : awaited_(set_of({SIGINT, SIGTERM, SIGHUP})) {
  pthread_sigmask(SIG_BLOCK, &awaited_, &before_);
  // SIGPIPE comes of a client that has gone; the others only from elsewhere. The script engine sees to its own.
  for (const int signal : {SIGPIPE, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF, SIGIO, SIGPWR}) ignore(signal);
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) ignore(signal);
}

OperatorSignals::~OperatorSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

OperatorSignals::Wish OperatorSignals::wait() const {
  int signal = 0;
  while (sigwait(&awaited_, &signal) != 0) continue;
  return signal == SIGHUP ? Wish::reread : Wish::end;
}

void OperatorSignals::let_end_through() const {
  // A pending one too, which would end the program once it is unblocked.
  std::signal(SIGHUP, SIG_IGN);
  const sigset_t end = set_of({SIGINT, SIGTERM});
  pthread_sigmask(SIG_UNBLOCK, &end, nullptr);
}

}  // namespace zelto
