// How findings are told.
#pragma once

#include <string>

#include "app/check/findings.h"

namespace zelto::check {

struct Report {
  const Findings& findings;
  std::string root;       // the site's folder, canonical
  std::string site;       // the same as it was named
  std::size_t pages = 0;  // that were looked at
  std::size_t templates = 0;

  // A line for each, "site/default.asp:3:5: error: text", and one that counts them.
  std::string text() const;
  // One object, indented: "site", "pages", "templates", "errors", "warnings", and "findings" with "file", "line",
  // "column", "severity" and "text".
  std::string json() const;

 private:
  std::string shown(const std::string& file) const;
};

}  // namespace zelto::check
