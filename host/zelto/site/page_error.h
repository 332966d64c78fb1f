// What went wrong in a page's script, as the site's log and its error pages tell it.
#pragma once

#include <optional>

#include "intrinsics/page_state.h"
#include "language/program.h"
#include "site/site.h"

namespace zelto {

// Files below the site's root are named from there.
PageError page_error(const language::ScriptError& error, const Site& site);

// What is said more of a page at its time limit that has no place. A function of the page has one, and so has a member
// that it calls.
const wchar_t* words_without_place(const std::optional<language::ScriptError>& error);

}  // namespace zelto
