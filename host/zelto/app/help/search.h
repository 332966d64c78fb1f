// The entries that answer a name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/help/entries.h"

namespace zelto::help {

// Those about the name, in any letter case; where there are none, those of the document or section that is called so,
// then those that mention it, those of sections whose heading has the word, and the first that have it in their text.
//
// "Response.Write" is a member under a heading that names the object; "(#*text#)", "#*" and "*" are the mark,
// "OnCommand_Save" is the event OnCommand_NAME. A single letter is no word that is looked for in texts.
//
// A mark is looked for among marks alone.
std::vector<const Entry*> find(const std::vector<Entry>& entries, std::string_view name);

// "Foo" of "Foo.Write", where the documents know nothing that is called so; else nothing. In small letters it is a
// variable, which a page calls as it likes.
std::string_view unknown_object(const std::vector<Entry>& entries, std::string_view name);
// What they say that the object of "Response.Wrte" has.
std::vector<std::string> members_beside(const std::vector<Entry>& entries, std::string_view name);

}  // namespace zelto::help
