// A site in a folder, and what is found in it.
#pragma once

#include <string>

#include "app/check/report.h"
#include "app/check/site_check.h"
#include "zelto/pages/site_fixture.h"

namespace test {

class CheckedSite : public SiteFolder {
 protected:
  // The lines that are printed, without the last, which counts.
  std::string found(const zelto::StaticOptions& files = {}) {
    zelto::SiteOptions options;
    options.files = files;
    zelto::check::Findings findings;
    zelto::check::SiteCheck check(root, options, findings);
    check.run();
    const std::string text = zelto::check::Report{findings, root, "."}.text();
    return text.substr(0, text.rfind('\n', text.size() - 2) + 1);
  }
};

}  // namespace test
