// What the documents say about each name, cut out of their Markdown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/help/pages.h"

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

// The entries about a name in any letter case; where there are none, those of the document or section that is called so,
// those that mention it, and those of sections whose heading has the word. "Response.Write" is a member under a heading
// that names the object; "(#*text#)" and "*" are the mark, "OnCommand_Save" is the event OnCommand_NAME.
std::vector<const Entry*> find(const std::vector<Entry>& entries, std::string_view name);

}  // namespace zelto::help
