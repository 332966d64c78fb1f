// One page of a site: whether it can be compiled, and what its script says by its words alone.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>

#include "app/check/findings.h"
#include "app/check/page_script.h"
#include "app/check/syntax.h"

namespace zelto::check {

class PageCheck {
 public:
  // All outlive it; the root is canonical.
  PageCheck(const std::string& root, Findings& findings) : root_(root), findings_(findings) {}

  // The page's script, with whatever is wrong in it told; nothing when it has none.
  std::optional<PageScript> check(const std::string& page);

  // Whether some page has included the file.
  bool is_included(const std::string& file) const { return included_.contains(file); }

 private:
  void check_includes(const std::string& file);
  void tell(const language::ScriptError& error, const PageScript& script);

  const std::string& root_;
  Findings& findings_;
  Syntax syntax_;
  std::unordered_set<std::string> scanned_;
  std::unordered_set<std::string> included_;
};

}  // namespace zelto::check
