// A plain value on its way from one type to another.
#pragma once

#include <cstdint>
#include <string_view>

#include <korlib/types.h>

namespace korlib::variants {

// Wide enough for every signed and unsigned 64-bit value, and for sums over them.
__extension__ typedef __int128 Wide;

inline constexpr LONGLONG kCurrencyUnit = 10000;

enum class Form {
  empty,
  integer,   // integer
  boolean,   // integer: 0 or -1
  currency,  // integer: ten-thousandths
  real,      // real
  single,    // real, but only as exact as a float
  date,      // real: days since 1899-12-30
  text,      // text, borrowed from the source
};

struct Scalar {
  Form form = Form::empty;
  Wide integer = 0;
  double real = 0;
  std::wstring_view text{};

  bool is_text() const { return form == Form::text; }
  bool is_real() const { return form == Form::real || form == Form::single || form == Form::date; }

  // The number that it is, empty being 0. Not for text, which has to be read as one.
  template <class Real>
  Real number() const {
    if (is_real()) return static_cast<Real>(real);
    const auto units = static_cast<Real>(integer);
    return form == Form::currency ? units / static_cast<Real>(kCurrencyUnit) : units;
  }
};

}  // namespace korlib::variants
