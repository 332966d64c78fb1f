// `zelto init`: a small site to begin with.
#pragma once

#include <string>

namespace zelto {

struct InitCommand {
  std::string folder;
};

// Writes the site, and says what to type next. The exit code. Throws WrongUse for a folder that has anything in it, and
// std::system_error for a file that cannot be written.
int init_site(const InitCommand& command);

}  // namespace zelto
