// From a script to what the engine runs.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "language/page_scope.h"
#include "language/program.h"
#include "vbscript/compile_error.h"
#include "vbscript/token.h"

namespace zelto::vbscript {

struct Source {
  std::wstring_view text;
  std::span<const PageMark> marks = {};  // in the order of their lines, which are empty in the text
  // What the page's script in the other language declares at top level; null where it has none.
  const std::vector<std::wstring>* others = nullptr;
};

struct Compiled {
  std::wstring head;                          // stands in front of everything, in the first line
  std::wstring text;                          // without it; has the lines of the source
  std::vector<language::ColumnShift> shifts;  // of that
  language::PageScope scope;
  std::vector<language::FoldedName> names;  // of the top level
};

// Throws CompileError.
Compiled compile(const Source& source);

// The same of a script that is no page, as a program. Null with `error` where it cannot be compiled.
std::shared_ptr<const language::Program> compile_program(std::wstring_view text, std::string url,
                                                         language::ScriptError* error);

// The words of an error, "Microsoft VBScript compilation error" being its source.
language::ScriptError describe(const CompileError& error, language::SourcePlace place);

}  // namespace zelto::vbscript
