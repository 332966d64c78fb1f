#include "script/engine_signal.h"

#include <unistd.h>

#include <csignal>

#include "script/jsc.h"

namespace zelto::script {
namespace {

struct sigaction engine_action {};  // what the engine has installed; written before on_signal is

// The kernel hands what is sent to the process to its first thread, which runs no scripts: one that the engine has
// stopped, and that any handler would wake, does not get it.
void on_signal(int number, siginfo_t* info, void* context) {
  const bool is_engines = info->si_code == SI_TKILL && info->si_pid == ::getpid();
  if (is_engines) engine_action.sa_sigaction(number, info, context);
}

}  // namespace

int engine_signal() { return SIGSTKFLT; }

void choose_engine_signal() { JSConfigureSignalForGC(engine_signal()); }

void guard_engine_signal() {
  if (::sigaction(engine_signal(), nullptr, &engine_action) != 0 || (engine_action.sa_flags & SA_SIGINFO) == 0) return;
  struct sigaction guarded = engine_action;
  guarded.sa_sigaction = on_signal;
  ::sigaction(engine_signal(), &guarded, nullptr);
}

}  // namespace zelto::script
