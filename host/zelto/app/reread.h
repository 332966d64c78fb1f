// Applies what has changed in zelto.toml to a server that runs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/configuration.h"
#include "app/log_sink.h"

namespace zelto {

// Reads the settings again, as far as they change without a restart, and opens the log anew. Calls `apply` before they
// become those that are running; when anything fails, these stay. Answers what the log is to say of it.
std::vector<std::string> reread(const ServeCommand& command, Configuration& running, LogSink& sink,
                                const std::function<void(const Configuration&)>& apply);

}  // namespace zelto
