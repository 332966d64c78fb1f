// What a page's script says by its words alone.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "app/check/findings.h"
#include "app/check/page_script.h"
#include "language/tokens.h"

namespace zelto::check {

// A template that a script draws by a name that stands in it.
struct NamedTemplate {
  std::wstring name;
  Place place;
};

struct ScriptWords {
  std::unordered_set<std::wstring> all;  // names and, of texts, what might be one
  std::unordered_set<std::wstring> draw_prefixes;
  bool makes_variables = false;                // whose names no script has
  bool makes_draw_functions = false;           // likewise
  bool draws_by_itself = false;                // with templators whose marks have no type
  std::vector<std::wstring> template_folders;  // as MapPath is given them
  std::vector<std::wstring> template_extensions;
  std::vector<NamedTemplate> templates;
};

// The text of a string literal; empty for any other token, and for one with escapes.
std::wstring_view literal_text(std::wstring_view token);

// Of a script in which names are not looked at: it may have any.
ScriptWords any_words();

ScriptWords words_of(const PageScript& script, const std::vector<language::Token>& tokens);

}  // namespace zelto::check
