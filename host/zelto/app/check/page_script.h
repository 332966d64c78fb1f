// A page's script as its files have it.
#pragma once

#include <cstddef>
#include <string>

#include "app/check/findings.h"
#include "pages/page_compiler.h"

namespace zelto::check {

struct PageScript {
  pages::CompiledPage page;
  std::wstring written;         // the script before it was made ready for the engine
  bool lacks_includes = false;  // that there are not: it may have any name of theirs
};

// Finds where characters of a script stand in the files, asked for in rising order.
class WrittenPlaces {
 public:
  // The script outlives it.
  explicit WrittenPlaces(const PageScript& script) : script_(script) {}

  Place at(std::size_t offset);

 private:
  const PageScript& script_;
  std::size_t at_ = 0;
  std::size_t line_ = 0;  // of the script, from 0
  std::size_t line_start_ = 0;
};

}  // namespace zelto::check
