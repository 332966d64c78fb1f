// A script's error as the page's: its files named from the site's root.
#pragma once

#include "intrinsics/page_state.h"
#include "language/program.h"
#include "site/site.h"

namespace zelto {

PageError page_error(const language::ScriptError& error, const Site& site);

}  // namespace zelto
