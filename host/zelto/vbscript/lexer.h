// Cuts a script into tokens.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "vbscript/compile_error.h"
#include "vbscript/token.h"

namespace zelto::vbscript {

// `marks` are in the order of their lines. Throws CompileError. The last token is an `end`.
std::vector<Token> tokenize(std::wstring_view text, std::span<const PageMark> marks = {});

}  // namespace zelto::vbscript
