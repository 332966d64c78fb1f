// How a run of a script ended, what went wrong in it, and what it had to say meanwhile.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "language/program.h"

namespace zelto::script {

using language::ScriptError;

struct Outcome {
  enum Kind {
    completed,
    stopped,        // Response.End or Redirect: what was written stands
    timed_out,      // the time limit of the engine ran out
    out_of_memory,  // its heap outgrew the memory limit of the engine
    failed,         // `error` says why
  };
  Kind kind = completed;
  std::optional<ScriptError> error;  // with `failed`; at a limit, only the place and the calls that it had come to
};

// A line that a script writes with console.log and the like.
struct LogLine {
  std::string level;  // "log", "info", "warn", "error" or "debug"
  std::string text;   // as the script gave it: it may hold line ends
  std::string file;   // where it was written; empty when unknown
  int line = 0;       // from 1; 0 when unknown
};
using LogSink = std::function<void(const LogLine&)>;

}  // namespace zelto::script
