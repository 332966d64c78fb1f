// What a piece of a program's text was before it was rewritten.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "language/program.h"

namespace zelto::language {

// Of a piece that the text has, be it in several places: what was rewritten to the same words was the same. Nothing
// where the text does not have it, and of what was compiled from another language.
//
// What stands between pieces of script in a page is shown as in its file, `function f() { %><b><% }`. An include shows
// in the place of its tag, and script in <script runat="server"> as if it stood in <% and %>.
std::optional<std::u16string> own_source(const Program& program, std::u16string_view piece);

}  // namespace zelto::language
