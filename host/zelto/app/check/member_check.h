// Members and classes that a page's script names and the host does not have.
#pragma once

#include <vector>

#include "app/check/findings.h"
#include "app/check/page_script.h"
#include "language/tokens.h"

namespace zelto::check {

// `Response.Foo(…)` and `Response.Foo = …` are errors, as they are when the page runs; reading one, which gives
// undefined, is a warning. So are classes in CreateObject("…") that nobody has registered errors.
void check_members(const PageScript& script, const std::vector<language::Token>& tokens, Findings& findings);

}  // namespace zelto::check
