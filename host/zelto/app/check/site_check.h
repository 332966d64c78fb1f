// All that `zelto check` looks at in a site.
#pragma once

#include <string>

#include "app/check/findings.h"
#include "app/check/page_check.h"
#include "app/check/site_files.h"
#include "site/static_files.h"

namespace zelto::check {

class SiteCheck {
 public:
  // All outlive it; the root is canonical.
  SiteCheck(const std::string& root, const StaticOptions& options, Findings& findings);

  // Wants the stack that a page has.
  void run();

  std::size_t pages() const { return files_.pages.size(); }
  std::size_t templates() const { return 0; }

 private:
  void check_global_file();

  const std::string& root_;
  const StaticOptions& options_;
  Findings& findings_;
  SiteFiles files_;
  PageCheck page_check_;
};

}  // namespace zelto::check
