// What went wrong in a page's script, as the site's log and its error pages tell it.
#pragma once

#include "intrinsics/page_state.h"
#include "language/program.h"
#include "site/site.h"

namespace zelto {

// Files below the site's root are named from there.
PageError page_error(const language::ScriptError& error, const Site& site);

}  // namespace zelto
