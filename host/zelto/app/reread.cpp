#include "app/reread.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

namespace zelto {

std::vector<std::string> reread(const ServeCommand& command, Configuration& running, LogSink& sink,
                                const std::function<void(const Configuration&)>& apply) {
  std::vector<std::string> told;
  try {
    Configuration fresh = read_configuration(command);
    const auto kept = keep_until_restart(fresh, running);
    sink.open(fresh.log);
    apply(fresh);
    running = std::move(fresh);
    told.emplace_back("zelto: zelto.toml is read again");
    for (const std::string_view key : kept) told.push_back(fmt::format("zelto: {} takes a restart to change", key));
  } catch (const std::exception& error) {
    try {
      sink.open(running.log);
    } catch (const std::exception& gone) {
      told.push_back(fmt::format("zelto: {}", gone.what()));
    }
    told.push_back(fmt::format("zelto: {}; the settings stay as they were", error.what()));
  }
  return told;
}

}  // namespace zelto
