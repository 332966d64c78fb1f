// A plain value on its way from one type to another.
#pragma once

#include <cstdint>
#include <string_view>

#include <korlib/types.h>

namespace korlib::variants {

// Wide enough for every signed and unsigned 64-bit value, and for sums over them.
__extension__ typedef __int128 Wide;

enum class Form {
  kEmpty,
  kInteger,   // integer
  kBoolean,   // integer: 0 or -1
  kCurrency,  // integer: ten-thousandths
  kReal,      // real
  kSingle,    // real, but only as exact as a float
  kDate,      // real: days since 1899-12-30
  kText,      // text, borrowed from the source
};

struct Scalar {
  Form form = Form::kEmpty;
  Wide integer = 0;
  double real = 0;
  std::wstring_view text{};
};

inline constexpr LONGLONG kCurrencyUnit = 10000;

}  // namespace korlib::variants
