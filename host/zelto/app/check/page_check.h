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
  // `language` is that of pages that do not say.
  PageCheck(const std::string& root, pages::Language language, Findings& findings)
      : root_(root), language_(language), findings_(findings) {}

  // Of all pages first: tells the includes of the page, and of what it includes, that there are not.
  void check_includes(const std::string& page);
  // The page's script, with whatever is wrong in it told; nothing when it has none. A page that others include may be
  // a part that makes no sense by itself: that it fails then is a warning.
  std::optional<PageScript> check(const std::string& page);

 private:
  void tell(const std::string& page, Place place, const std::string& text);

  const std::string& root_;
  const pages::Language language_;
  Findings& findings_;
  Syntax syntax_;
  std::unordered_set<std::string> scanned_;
  std::unordered_set<std::string> included_;
};

}  // namespace zelto::check
