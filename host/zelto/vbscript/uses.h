// What the statements of a procedure, or of the top level, do with names.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "vbscript/tree.h"

namespace zelto::vbscript {

struct Uses {
  // A variable that stands alone as an argument.
  struct Passed {
    std::wstring name;         // folded
    const Expression* callee;  // a name or member
    std::size_t position;      // among the arguments
  };

  // `name = value`
  struct Let {
    std::wstring name;  // folded
    const Expression* value;
    bool is_in_loop;
  };

  std::vector<const Expression*> names;  // each time that one is named
  std::set<std::wstring> assigned;       // folded, as a whole: by Let, Set, ReDim, Erase, For
  std::vector<Let> lets;
  std::set<std::wstring> replaced;  // those of `assigned` that something else than Let assigns to
  std::vector<Passed> passed;
  std::vector<const Declared*> variables;  // of Dim
  std::vector<const Declared*> constants;
  std::vector<const Declared*> redimmed;
  bool has_resume = false;
  bool names_me = false;
  bool makes_code = false;  // Execute, ExecuteGlobal, Eval
};

Uses uses_of(const Block& block);

}  // namespace zelto::vbscript
