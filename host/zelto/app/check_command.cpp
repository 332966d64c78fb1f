#include "app/check_command.h"

#include <filesystem>
#include <iostream>

#include "app/check/report.h"
#include "app/check/site_check.h"
#include "app/command_line.h"
#include "app/configuration.h"
#include "app/runtime.h"
#include "base/thread.h"
#include "platform/canonical_path.h"
#include "site/page_run.h"

namespace zelto {

namespace {

// What zelto.toml says of the site; what is wrong there is a finding as well.
StaticOptions read_options(const CheckCommand& command, const std::string& root, check::Findings& findings) {
  try {
    ServeCommand serve;
    serve.site = command.site;
    return read_configuration(serve).site.files;
  } catch (const WrongUse& error) {
    // "site/zelto.toml:3: what"
    const std::string name = command.site + "/zelto.toml";
    std::string_view words = error.what();
    if (words.starts_with(name)) words.remove_prefix(name.size());
    const std::size_t number = words.find_first_not_of(":0123456789");
    const int line = words.starts_with(':') ? std::atoi(std::string(words.substr(1)).c_str()) : 1;
    if (number != std::string_view::npos) words.remove_prefix(number);
    while (words.starts_with(' ')) words.remove_prefix(1);
    findings.error({root + "/zelto.toml", line, 1}, std::string(words));
    return {};
  }
}

}  // namespace

int check_site(const CheckCommand& command) {
  const auto root = canonical_path(command.site);
  if (!root || !std::filesystem::is_directory(*root)) throw WrongUse("'" + command.site + "' is not a folder");
  set_up_runtime();  // which knows the classes that pages may make
  check::Findings findings;
  const StaticOptions options = read_options(command, *root, findings);
  check::Report report{findings, *root, command.site};
  base::run_on_thread(kPageStack, [&] {
    check::SiteCheck check(*root, options, findings);
    check.run();
    report.pages = check.pages();
    report.templates = check.templates();
  });
  std::cout << (command.json ? report.json() : report.text()) << std::flush;
  if (!std::cout) throw std::runtime_error("standard output cannot be written");
  const bool fails = findings.count(check::Severity::error) > 0 || (command.strict && !findings.all().empty());
  return fails ? kFailure : kSuccess;
}

}  // namespace zelto
