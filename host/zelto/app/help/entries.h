// What the documents say about each name, cut out of their Markdown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/help/pages.h"
#include "base/ascii.h"

namespace zelto::help {

// A row of a table, a paragraph, an item of a list, a line of settings; at the end of a document, its sections.
struct Entry {
  std::string_view file;
  std::string heading;                // the nearest one above; the document's own at its beginning
  bool is_opening = false;            // under the document's own heading
  std::vector<std::string> names;     // that it is about: members, marks, keys, events
  std::vector<std::string> mentions;  // that it names besides
  std::string text;                   // without what only Markdown means
};

std::vector<Entry> entries_of(const Page& page);

// What a name is made of: "Response.Write", "body_limit".
constexpr bool is_name(char c) { return base::is_alphanumeric(c) || c == '_' || c == '.'; }

}  // namespace zelto::help
