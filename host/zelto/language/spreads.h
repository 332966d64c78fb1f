// Where a script spreads a value: `[...a]` and `f(...a)`, but not `{...a}`.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "language/tokens.h"

namespace zelto::language {

class Spreads : private TokenText {
 public:
  Spreads(std::wstring_view text, const std::vector<Token>& tokens);

  // Whether the dots at token `i` stand in front of a value. In a pattern or a list of parameters they stand in front
  // of what gets the rest; where a value is told there, as the default of a parameter, it may be left out.
  bool is_value(std::size_t i) const { return values_[i]; }

 private:
  bool takes(std::size_t open, bool does_outside) const;

  std::vector<bool> values_;
};

}  // namespace zelto::language
