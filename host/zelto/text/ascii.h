// The names by which the rooms above still ask for what has its home elsewhere.
#pragma once

#include "base/letter_case.h"
#include "text/http_grammar.h"
#include "text/percent_coding.h"

namespace zelto {

inline bool same_text(std::string_view a, std::string_view b) { return base::equal_ascii(a, b); }
inline std::string lower_text(std::string_view text) { return base::ascii_lowered(text); }

}  // namespace zelto
