#include "site/site.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "base/letter_case.h"
#include "platform/canonical_path.h"
#include "text/characters.h"

namespace zelto {

namespace {

SiteOptions with_canonical_root(SiteOptions options) {
  const auto root = canonical_path(options.root);
  if (!root) throw std::runtime_error(options.root + " is not a folder that can be served");
  options.root = *root == "/" ? "" : *root;
  return options;
}

StaticOptions static_options(const SiteOptions& site) {
  StaticOptions options = site.files;
  options.root = site.root.empty() ? "/" : site.root;
  return options;
}

}  // namespace

SiteSettings::SiteSettings(SiteOptions given)
    : options(with_canonical_root(std::move(given))), files(static_options(options)) {}

Site::Site(SiteOptions options)
    : settings_(std::make_shared<SiteSettings>(std::move(options))),
      root_(settings_->options.root),
      log_(settings_->options.log),
      application_(std::make_shared<ApplicationState>(settings_->options.session_patience)),
      programs_(root_, settings_->options.language),
      sessions_(settings_->options.session_patience, settings_->options.session_timeout,
                settings_->options.session_suffix, settings_->options.session_limit) {}

std::shared_ptr<const SiteSettings> Site::settings() const {
  const std::scoped_lock guard(mutex_);
  return settings_;
}

void Site::change(SiteOptions options) {
  options.root = root_.empty() ? "/" : root_;
  auto changed = std::make_shared<const SiteSettings>(std::move(options));
  sessions_.set_limits(changed->options.session_timeout, changed->options.session_limit);
  const std::scoped_lock guard(mutex_);
  settings_.swap(changed);
}

std::string_view Site::path_of(std::string_view file) const {
  if (file.starts_with(root_ + "/")) file.remove_prefix(root_.size());
  return file;
}

void Site::log(std::string_view line) const {
  if (log_) log_(plain_line(line));
}

std::string Site::notice() const {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(root_ + "/", error)) {
    const std::string name = entry.path().filename().string();
    if (!base::equal_ascii(name, "global.asa")) continue;
    return "zelto: " + name + " is not run: what it declares for the application and its sessions does not happen";
  }
  return {};
}

}  // namespace zelto
