#include "app/site.h"

#include <stdexcept>

#include "platform/canonical_path.h"

namespace zelto {

namespace {

SiteOptions with_canonical_root(SiteOptions options) {
  const auto root = canonical_path(options.root);
  if (!root) throw std::runtime_error(options.root + " is no folder that can be served");
  options.root = *root == "/" ? "" : *root;
  return options;
}

StaticOptions static_options(const SiteOptions& site) {
  StaticOptions options = site.files;
  options.root = site.root.empty() ? "/" : site.root;
  return options;
}

}  // namespace

Site::Site(SiteOptions options)
    : options_(with_canonical_root(std::move(options))),
      files_(static_options(options_)),
      application_(std::make_shared<ApplicationState>(options_.session_patience)),
      programs_(options_.root),
      sessions_(options_.session_patience, options_.session_timeout, options_.session_suffix, options_.session_limit) {}

void Site::log(std::string_view line) const {
  if (options_.log) options_.log(line);
}

}  // namespace zelto
