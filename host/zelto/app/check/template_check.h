// The templates of a site: their marks, and what these name.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "app/check/findings.h"
#include "app/check/mark_scanner.h"
#include "app/check/script_words.h"
#include "site/protected_names.h"

namespace zelto::check {

class TemplateCheck {
 public:
  // All outlive it; the root is canonical.
  TemplateCheck(const std::string& root, const ProtectedNames& protected_names, Findings& findings)
      : root_(root), protected_names_(protected_names), findings_(findings) {}

  // Looks at what the page draws by a name that stands in its script, as far as that can be known.
  void check_page(const std::string& page, const ScriptWords& words);
  // After all pages: looks at every template in these folders, and those that pages have named.
  void check_all(const std::vector<std::string>& folders);

  std::size_t count() const { return count_; }

 private:
  // A mark whose name is a script's or a template's.
  struct NamedMark {
    Mark mark;
    Place place;
  };
  struct Template {
    bool is_there = false;
    bool is_of_a_page = false;  // drawn by a page controller, whose marks have types
    std::vector<NamedMark> named;
    std::vector<NamedMark> untyped;
  };

  const Template& read(const std::string& path);
  void tell_marks(const std::string& path, const std::wstring& text, const ScannedMarks& scanned, Template& made);
  std::string meant(const ScriptWords& words, const std::wstring& wanted);
  void check_names(const Template& drawn, const ScriptWords& words, const std::string& whose);
  void check_parts(const std::string& path, const Template& drawn);
  void check_untyped(const Template& drawn);
  void mark_parts(const std::string& path);
  std::vector<std::string> folder_of(const std::string& page, const ScriptWords& words) const;
  bool is_template(const std::string& file) const;
  void add_words(const ScriptWords& words);

  const std::string& root_;
  const ProtectedNames& protected_names_;
  Findings& findings_;
  ScriptWords site_;  // of all pages
  std::unordered_map<std::string, Template> templates_;
  std::vector<std::string> drawn_;              // that pages draw by their names
  std::unordered_set<std::string> folders_;     // that pages have named
  std::unordered_set<std::string> extensions_;  // likewise
  std::set<Place> told_;                        // of names that a page does not have
  std::size_t suggestions_ = 0;                 // that were looked for
  std::size_t count_ = 0;
};

}  // namespace zelto::check
