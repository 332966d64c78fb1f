// Code that is made while a script runs: Eval, Execute and ExecuteGlobal.
#pragma once

#include <string>
#include <string_view>

namespace zelto::vbscript {

enum class FragmentKind : unsigned char { eval, execute, execute_global };

// What the names mean that can be seen where it stands: lines of a kind, the folded name, what is written for it, and
// of a procedure for each parameter whether it is a reference ("1") or not ("0"), with tabs between. The last of a name
// is the one.
struct NameKind {
  static constexpr wchar_t variable = L'v';
  static constexpr wchar_t procedure = L'p';
  static constexpr wchar_t class_ = L'c';
  static constexpr wchar_t external = L'x';
};

// As the language's own eval takes it, where it stands. `counts`: the script around it counts references. Throws
// CompileError.
std::wstring compile_fragment(std::wstring_view text, FragmentKind kind, std::wstring_view names, bool counts);

}  // namespace zelto::vbscript
