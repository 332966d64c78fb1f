// Names of a script as the language has them that it becomes.
#pragma once

#include <string>
#include <string_view>

namespace zelto::vbscript {

// In the spelling that the author gave it, with a "$" behind it where it would mean something else there: a reserved
// word; at top level also what the language, or the host, has by that name. What cannot stand in a name is written as
// its number.
std::wstring script_name(std::wstring_view name, bool is_top_level);

// The host's object of that name in its own spelling; empty for any other.
std::wstring_view host_name(std::wstring_view folded_name);

}  // namespace zelto::vbscript
