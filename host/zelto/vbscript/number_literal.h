// A number as a script writes it.
#pragma once

#include <cstddef>
#include <string_view>

#include "vbscript/token.h"

namespace zelto::vbscript {

struct NumberLiteral {
  std::size_t length = 0;  // 0: it is none, or too large
  double value = 0;
  NumberKind kind = NumberKind::integer;
};

// 12, 1.5, .5, 1E3, &HFF, &O17, &17, and with & behind it a long one. What begins the text is a digit, a point before
// one, or an ampersand.
NumberLiteral read_number_literal(std::wstring_view text);

}  // namespace zelto::vbscript
