// What is wrong with a page before any of it runs.
#pragma once

#include <stdexcept>
#include <string>

namespace zelto::pages {

// Thrown inside the compiler; Programs turns it into the page's error.
struct PageSourceError : std::runtime_error {
  PageSourceError(const std::string& what, std::string in_file, int at_line)
      : std::runtime_error(what), file(std::move(in_file)), line(at_line) {}
  std::string file;  // its physical path
  int line;          // from 1
};

}  // namespace zelto::pages
