#include "app/check_command.h"

#include <filesystem>
#include <iostream>

#include "app/check/report.h"
#include "app/check/site_check.h"
#include "app/command_line.h"
#include "app/configuration.h"
#include "app/configuration_file.h"
#include "app/runtime.h"
#include "base/thread.h"
#include "platform/canonical_path.h"
#include "site/page_run.h"

namespace zelto {

namespace {

// What zelto.toml says of the site; what is wrong there is a finding as well.
SiteOptions read_options(const CheckCommand& command, const std::string& root, check::Findings& findings) {
  try {
    ServeCommand serve;
    serve.site = command.site;
    return read_configuration(serve).site;
  } catch (const WrongConfiguration& error) {
    for (const ConfigurationFault& fault : error.faults)
      findings.error({root + "/zelto.toml", fault.line, fault.column}, fault.text);
  } catch (const WrongUse& error) {
    // "site/zelto.toml cannot be read"
    const std::string name = command.site + "/zelto.toml ";
    std::string_view words = error.what();
    if (words.starts_with(name)) words.remove_prefix(name.size());
    findings.error({root + "/zelto.toml", 1, 1}, std::string(words));
  }
  return {};
}

}  // namespace

int check_site(const CheckCommand& command) {
  const auto root = canonical_path(command.site);
  if (!root || !std::filesystem::is_directory(*root)) throw WrongUse("'" + command.site + "' is not a folder");
  set_up_runtime();  // which knows the classes that pages may make
  check::Findings findings;
  const SiteOptions options = read_options(command, *root, findings);
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
