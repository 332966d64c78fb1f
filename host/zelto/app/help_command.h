// `zelto help`: what the documents say about a member, a mark, an event or a key of zelto.toml.
#pragma once

#include <string>
#include <vector>

namespace zelto {

struct HelpCommand {
  std::vector<std::string> names;
};

// Prints the entries. The exit code: a failure when a name has none.
int print_help(const HelpCommand& command);

}  // namespace zelto
