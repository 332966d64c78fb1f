// Pieces of source in the engine's messages, as the page's author wrote them.
#pragma once

#include <string>
#include <string_view>

namespace zelto::language {

// Stands in front of a loop, and of what sets a constant: rewriter.h. The name is that of a value that is false.
inline constexpr std::wstring_view kStatementPlace = L"if($zelto_never);else ";
// In front of what a pattern takes apart, whatever expression that is.
inline constexpr std::wstring_view kPatternPlace = L"$zelto_never?0:";

// A message without the words that the rewriter put into the source (rewriter.h):
// "$zelto_call(a, \"B\").c is not a function" is "a.B().c is not a function".
std::wstring as_written(std::wstring message);

}  // namespace zelto::language
