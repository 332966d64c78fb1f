#include "app/check/syntax.h"

#include "script/syntax.h"

namespace zelto::check {

Syntax::Syntax() : context_(JSGlobalContextCreate(nullptr)) {}
Syntax::~Syntax() { JSGlobalContextRelease(context_); }

std::optional<language::ScriptError> Syntax::check(const language::Program& program) const {
  return script::syntax_error(context_, program);
}

}  // namespace zelto::check
