// The documents for authors and operators, as the program has them in it. They stand in docs/; the build makes C++ of
// them.
#pragma once

#include <span>
#include <string_view>

namespace zelto::help {

struct Page {
  std::string_view file;  // "templates.md"
  std::string_view text;  // Markdown
};

std::span<const Page> pages();

}  // namespace zelto::help
