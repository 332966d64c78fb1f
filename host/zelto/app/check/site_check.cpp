#include "app/check/site_check.h"

#include "app/check/link_check.h"
#include "app/check/member_check.h"
#include "app/check/script_words.h"
#include "base/letter_case.h"
#include "language/tokens.h"
#include "pages/directive.h"
#include "pages/source_file.h"
#include "text/charset.h"

namespace zelto::check {

SiteCheck::SiteCheck(const std::string& root, const SiteOptions& options, Findings& findings)
    : root_(root),
      options_(options.files),
      findings_(findings),
      files_(SiteFiles::of(root, options_.protected_names, options_.page_extension)),
      page_check_(root_, options.language, findings_),
      template_check_(root_, options_.protected_names, findings_) {}

void SiteCheck::check_global_file() {
  for (const std::string& file : files_in(root_)) {
    if (base::equal_ascii(std::string_view(file).substr(root_.size() + 1), "global.asa"))
      findings_.warning({file, 1, 1},
                        "This file is not run: what it declares for the application and its sessions does not happen.");
  }
}

void SiteCheck::check_links_of(const std::string& file, bool is_page) {
  const auto source = pages::read_source(file);
  if (!source) return;
  const LONG code_page = is_page ? pages::code_page_of_source(source->bytes) : kUtf8CodePage;
  check_links(file, pages::decode_source(source->bytes, code_page), is_page, options_.protected_names, findings_);
}

void SiteCheck::check_page(const std::string& page) {
  check_links_of(page, true);
  const auto script = page_check_.check(page);
  if (!script) return;
  if (script->page.has_vbscript) return template_check_.check_page(page, any_words());
  const auto tokens = language::tokenize(script->written);
  if (!tokens) return;
  check_members(*script, tokens->all, findings_);
  template_check_.check_page(page, words_of(*script, tokens->all));
}

void SiteCheck::run() {
  check_global_file();
  for (const std::string& page : files_.pages) page_check_.check_includes(page);
  for (const std::string& page : files_.pages) check_page(page);
  for (const std::string& document : files_.documents) check_links_of(document, false);
  template_check_.check_all(files_.folders);
}

}  // namespace zelto::check
