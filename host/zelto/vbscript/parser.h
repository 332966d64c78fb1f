// A script as a tree, or what is wrong with it.
#pragma once

#include <span>
#include <string_view>

#include "vbscript/tree.h"

namespace zelto::vbscript {

// Throws CompileError. `marks`: see tokenize(). What is executed may have Sub and Class anywhere as well.
Script parse(std::wstring_view text, std::span<const PageMark> marks = {});
// Of Eval: one expression.
ExpressionPtr parse_expression(std::wstring_view text);

}  // namespace zelto::vbscript
