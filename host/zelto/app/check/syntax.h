// What the script engine objects to in a page before it runs.
#pragma once

#include <optional>

#include "language/program.h"
#include "script/jsc.h"

namespace zelto::check {

// Parses and runs nothing. Its calls want the stack that a page has.
class Syntax {
 public:
  Syntax();
  ~Syntax();
  Syntax(const Syntax&) = delete;
  Syntax& operator=(const Syntax&) = delete;

  // Nothing when the program can be run.
  std::optional<language::ScriptError> check(const language::Program& program) const;

 private:
  JSGlobalContextRef context_;
};

}  // namespace zelto::check
