// Pieces of source in the engine's messages, as the page's author wrote them.
#pragma once

#include <string>

namespace zelto::language {

// A message without the words that the rewriter put into the source (rewriter.h):
// "$zelto_call(a, \"B\").c is not a function" is "a.B().c is not a function".
std::wstring as_written(std::wstring message);

}  // namespace zelto::language
