// What the documents say about each name, cut out of their Markdown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/help/pages.h"

namespace zelto::help {

// A row of a table, a paragraph, an item of a list, a line of settings.
struct Entry {
  std::string_view file;
  std::string heading;                // the nearest one above; the document's own at its beginning
  std::vector<std::string> names;     // that it is about: members, marks, keys, events
  std::vector<std::string> mentions;  // that it names besides
  std::string text;                   // without what only Markdown means
};

std::vector<Entry> entries_of(const Page& page);

// The entries about a name in any letter case; where there are none, those that mention it. "Response.Write" is a
// member under a heading that names the object; "(#*text#)" and "*" are the mark, "OnCommand_Save" is the event
// OnCommand_NAME.
std::vector<const Entry*> find(const std::vector<Entry>& entries, std::string_view name);

}  // namespace zelto::help
