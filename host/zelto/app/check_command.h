// `zelto check`: what is wrong with a site, without running it.
#pragma once

#include <string>

namespace zelto {

struct CheckCommand {
  std::string site = ".";
  bool json = false;
  bool strict = false;  // warnings fail as well
};

// Prints what was found. The exit code; throws WrongUse for what is no folder.
int check_site(const CheckCommand& command);

}  // namespace zelto
