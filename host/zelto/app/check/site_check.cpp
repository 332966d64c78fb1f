#include "app/check/site_check.h"

#include "base/letter_case.h"

namespace zelto::check {

SiteCheck::SiteCheck(const std::string& root, const StaticOptions& options, Findings& findings)
    : root_(root),
      options_(options),
      findings_(findings),
      files_(SiteFiles::of(root, options.protected_names, options.page_extension)),
      page_check_(root_, findings_) {}

void SiteCheck::check_global_file() {
  for (const std::string& file : files_in(root_)) {
    if (base::equal_ascii(std::string_view(file).substr(root_.size() + 1), "global.asa"))
      findings_.warning({file, 1, 1},
                        "This file is not run: what it declares for the application and its sessions does not happen.");
  }
}

void SiteCheck::run() {
  check_global_file();
  for (const std::string& page : files_.pages) page_check_.check(page);
}

}  // namespace zelto::check
