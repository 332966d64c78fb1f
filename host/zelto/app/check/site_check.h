// All that `zelto check` looks at in a site.
#pragma once

#include <string>

#include "app/check/findings.h"
#include "app/check/page_check.h"
#include "app/check/site_files.h"
#include "app/check/template_check.h"
#include "site/site.h"

namespace zelto::check {

class SiteCheck {
 public:
  // All outlive it; the root is canonical.
  SiteCheck(const std::string& root, const SiteOptions& options, Findings& findings);

  // Wants the stack that a page has.
  void run();

  std::size_t pages() const { return files_.pages.size(); }
  std::size_t templates() const { return template_check_.count(); }

 private:
  void check_global_file();
  void check_page(const std::string& page);
  void check_links_of(const std::string& file, bool is_page);

  const std::string& root_;
  const StaticOptions& options_;
  Findings& findings_;
  SiteFiles files_;
  PageCheck page_check_;
  TemplateCheck template_check_;
};

}  // namespace zelto::check
