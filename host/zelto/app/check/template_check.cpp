#include "app/check/template_check.h"

#include <mirt/draw_functions.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "app/check/link_check.h"
#include "app/check/site_files.h"
#include "base/ascii.h"
#include "base/letter_case.h"
#include "base/near_names.h"
#include "base/path_text.h"
#include "language/lexemes.h"
#include "pages/include_file.h"
#include "pages/page_scanner.h"
#include "pages/source_file.h"
#include "text/charset.h"
#include "text/path_segments.h"

namespace zelto::check {

namespace {

namespace fs = std::filesystem;

// What a template mostly ends with, beside what the pages of the site say.
constexpr std::string_view kExtensions[] = {".html", ".htm", ".tpl", ".txt", ".xml"};

constexpr std::size_t kMostSuggestions = 200;

std::string_view name_of(std::string_view path) { return path.substr(path.rfind('/') + 1); }
std::string folder_of_file(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool is_file(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

// As a mark names the template that it draws.
std::string part_name(const Mark& mark) {
  std::string name = base::with_slashes(to_utf8(mark.name));
  if (name.starts_with('/')) name.erase(0, 1);
  return name;
}

std::string part_of(const std::string& path, const Mark& mark) {
  return folder_of_file(path) + "/" + part_name(mark) + std::string(extension_of(name_of(path)));
}

bool has_draw_function(const ScriptWords& words, const std::wstring& name) {
  return std::ranges::any_of(words.draw_prefixes,
                             [&](const std::wstring& prefix) { return words.all.contains(prefix + name); });
}

// A page draws it without a function of the script.
bool is_of_component(const std::wstring& name) {
  return std::ranges::any_of(mirt::kDrawFunctions, [&](std::wstring_view one) { return base::equal_ascii(one, name); });
}

std::wstring near_function_of_component(const std::wstring& name) {
  if (!name.starts_with(L'_')) return {};
  return base::did_you_mean({std::begin(mirt::kDrawFunctions), std::end(mirt::kDrawFunctions)}, name);
}

}  // namespace

bool TemplateCheck::is_template(const std::string& file) const {
  const std::string_view extension = extension_of(name_of(file));
  return extensions_.contains(std::string(extension)) ||
         std::ranges::any_of(kExtensions, [&](std::string_view one) { return base::equal_ascii(one, extension); });
}

// Marks that are wrong by themselves.
void TemplateCheck::tell_marks(const std::string& path, const std::wstring& text, const ScannedMarks& scanned,
                               Template& made) {
  std::vector<const Mark*> in_order;
  in_order.reserve(scanned.marks.size());
  for (const Mark& mark : scanned.marks) in_order.push_back(&mark);
  std::ranges::sort(in_order, {}, &Mark::begin);
  pages::LineCounter lines(text);
  for (const Mark* mark : in_order) {
    if (!mark->is_certain) continue;
    lines.move_to(mark->begin);
    const Place place{path, lines.line(), lines.column() + 1};
    const MarkNames names = names_of(mark->type);
    const bool is_note = mark->name.empty() || base::trimmed(std::wstring_view(mark->name), [](wchar_t c) {
                                                 return c <= L' ';
                                               }).size() != mark->name.size();
    if (names == MarkNames::nothing && !is_note && mark->is_literal) made.untyped.push_back({*mark, place});
    if (names != MarkNames::nothing && names != MarkNames::value && mark->is_literal && !mark->name.empty())
      made.named.push_back({*mark, place});
  }
  pages::LineCounter fault_lines(text);
  for (const MarkFault& fault : scanned.faults) {
    fault_lines.move_to(fault.at);
    findings_.error({path, fault_lines.line(), fault_lines.column() + 1}, fault.what);
  }
}

const TemplateCheck::Template& TemplateCheck::read(const std::string& path) {
  const auto [entry, is_new] = templates_.try_emplace(path);
  Template& made = entry->second;
  if (!is_new) return made;
  const auto source = pages::read_source(path);
  if (!source) return made;
  made.is_there = true;
  ++count_;
  const std::wstring text = pages::decode_source(source->bytes, kUtf8CodePage);
  if (text.find(L'\xFFFD') != std::wstring::npos) return made;  // in another character set, which only its page knows
  tell_marks(path, text, scan_marks(text), made);
  check_links(path, text, false, protected_names_, findings_);
  return made;
}

// "." or "; did you mean 'title'?", for the first of the names that there are not: looking at all words takes long.
std::string TemplateCheck::meant(const ScriptWords& words, const std::wstring& wanted) {
  if (suggestions_ >= kMostSuggestions) return ".";
  ++suggestions_;
  std::vector<std::wstring> names(words.all.begin(), words.all.end());
  std::ranges::sort(names);  // so that of two that are as near the same one is named each time
  const std::wstring near = base::did_you_mean(names, wanted);
  return near.empty() ? "." : "; " + to_utf8(near);
}

// Functions and variables that the words do not have.
void TemplateCheck::check_names(const Template& drawn, const ScriptWords& words, const std::string& whose) {
  const bool is_all = &words == &site_;
  for (const auto& [mark, place] : drawn.named) {
    const std::wstring& name = mark.name;
    if (is_all && told_.contains(place)) continue;
    if (names_of(mark.type) == MarkNames::draw_function) {
      if (words.makes_draw_functions || has_draw_function(words, name) || is_of_component(name)) continue;
      told_.insert(place);
      const std::wstring near = near_function_of_component(name);
      findings_.warning(place, whose + " function 'OnDraw_" + to_utf8(name) + "'" +
                                   (near.empty() ? meant(words, L"OnDraw_" + name) : "; " + to_utf8(near)));
    } else if (names_of(mark.type) == MarkNames::variable) {
      if (words.makes_variables || words.all.contains(name) || !language::is_plain_name(name)) continue;
      told_.insert(place);
      findings_.warning(place, whose + " variable or function '" + to_utf8(name) + "'" + meant(words, name));
    }
  }
}

// A templator without a page has marks without types, which name what its script has.
void TemplateCheck::check_untyped(const Template& drawn) {
  for (const auto& [mark, place] : drawn.untyped) {
    if (site_.draws_by_itself && !drawn.is_of_a_page && (site_.makes_variables || site_.all.contains(mark.name)))
      continue;
    findings_.warning(place, "This mark shows nothing: '" + to_utf8(mark.name.substr(0, 1)) +
                                 "' is no type of mark, which stands in front of the name.");
  }
}

// What a mark of the template draws is drawn by the page as well.
void TemplateCheck::mark_parts(const std::string& path) {
  std::vector<std::string> waiting = {path};
  while (!waiting.empty()) {
    const std::string current = std::move(waiting.back());
    waiting.pop_back();
    const auto found = templates_.find(current);
    if (found == templates_.end() || std::exchange(found->second.is_of_a_page, true)) continue;
    for (const auto& [mark, place] : found->second.named)
      if (names_of(mark.type) == MarkNames::template_file) waiting.push_back(part_of(current, mark));
  }
}

// Templates that are drawn by a mark, from beside the one that names them.
void TemplateCheck::check_parts(const std::string& path, const Template& drawn) {
  for (const auto& [mark, place] : drawn.named) {
    if (names_of(mark.type) != MarkNames::template_file) continue;
    const std::string wanted = part_of(path, mark);
    const std::string name = part_name(mark);
    if (name.find('\0') != std::string::npos || is_file(wanted)) continue;
    findings_.warning(place,
                      "There is no template '" + name + "' beside this one" + pages::end_of_missing(root_, wanted));
  }
}

std::vector<std::string> TemplateCheck::folder_of(const std::string& page, const ScriptWords& words) const {
  std::vector<std::string> folders;
  for (const std::wstring& folder : words.template_folders) {
    const auto path = resolve_virtual_path(to_utf8(folder), page.substr(root_.size()));
    if (path) folders.push_back(root_ + (path->ends_with('/') ? path->substr(0, path->size() - 1) : *path));
  }
  return folders;
}

void TemplateCheck::add_words(const ScriptWords& words) {
  site_.all.insert(words.all.begin(), words.all.end());
  site_.draw_prefixes.insert(words.draw_prefixes.begin(), words.draw_prefixes.end());
  site_.makes_variables |= words.makes_variables;
  site_.makes_draw_functions |= words.makes_draw_functions;
  site_.draws_by_itself |= words.draws_by_itself;
  for (const std::wstring& extension : words.template_extensions) extensions_.insert(to_utf8(extension));
}

void TemplateCheck::check_page(const std::string& page, const ScriptWords& words) {
  add_words(words);
  const std::vector<std::string> folders = folder_of(page, words);
  folders_.insert(folders.begin(), folders.end());
  if (folders.size() != 1 || words.template_extensions.size() > 1) return;
  const std::string extension = words.template_extensions.empty() ? "" : to_utf8(words.template_extensions.front());
  for (const auto& [name, place] : words.templates) {
    const std::string path = folders.front() + "/" + base::with_slashes(to_utf8(name)) + extension;
    const Template& drawn = read(path);
    if (drawn.is_there) {
      drawn_.push_back(path);
      check_names(drawn, words,
                  "The script of \"" + page.substr(root_.size()) + "\", which draws this template, has no");
    } else if (!words.all.contains(L"On_TemplateNotFound") && !words.all.contains(L"OnTemplate_" + name)) {
      findings_.warning(
          place, "There is no template \"" + path.substr(root_.size()) + "\"" + pages::end_of_missing(root_, path));
    }
  }
}

void TemplateCheck::check_all(const std::vector<std::string>& folders) {
  for (const std::string& folder : folders) {
    const bool is_named = folders_.contains(folder);
    const bool is_below =
        std::ranges::any_of(path_segments(std::string_view(folder).substr(root_.size())),
                            [](std::string_view name) { return base::equal_ascii(name, "templates"); });
    if (!is_named && !is_below) continue;
    for (const std::string& file : files_in(folder)) {
      if (is_template(file)) read(file);
    }
  }
  for (const std::string& path : drawn_) mark_parts(path);
  for (const auto& [path, drawn] : templates_) {
    check_untyped(drawn);
    check_names(drawn, site_, "No script of the site has a");
    check_parts(path, drawn);
  }
}

}  // namespace zelto::check
