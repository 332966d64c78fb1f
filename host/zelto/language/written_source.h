// Pieces of source in the engine's messages, as the page's author wrote them.
#pragma once

#include <string>
#include <string_view>

namespace zelto::language {

// Stands in front of a loop: rewriter.h. The name is that of a value that is false.
inline constexpr std::wstring_view kLoopPlace = L"if($zelto_never);else ";

// A message without the words that the rewriter put into the source (rewriter.h):
// "$zelto_call(a, \"B\").c is not a function" is "a.B().c is not a function".
std::wstring as_written(std::wstring message);

}  // namespace zelto::language
