// What the engine objects to in a program before it runs, as the page's author would have it.
#pragma once

#include <optional>

#include "language/program.h"
#include "script/jsc.h"

namespace zelto::script {

// Parses the program, and its beginnings to find the place, and runs nothing. Nothing when it can be run. Wants the
// stack that a page has.
//
// The engine tells a line, which for a script that ends too early lies behind its end. The place is that of the token
// that cannot stand where it does, or where the string, comment or bracket begins that nothing closes; a bracket that
// is still open at the token is among the causes.
std::optional<language::ScriptError> syntax_error(JSContextRef context, const language::Program& program);

}  // namespace zelto::script
