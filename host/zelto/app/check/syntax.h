// What the script engine objects to in a page before it runs.
#pragma once

#include <memory>
#include <optional>
#include <string>

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
  struct Fault {
    std::wstring message;
    int line = 0;  // of the program's text, from 1
  };
  std::optional<Fault> fault_of(std::u16string_view text) const;
  int find_column(std::u16string_view text, const Fault& fault) const;

  JSGlobalContextRef context_;
};

}  // namespace zelto::check
