// A text in the place of another, without a new string.
#pragma once

#include <korlib/types.h>

namespace korlib::strings {

// Writes the text into a string that nobody else refers to, where that lies in a block of the size which a copy would
// take. False, and nothing written, for any other, and where one of the two is null.
bool write_over(BSTR text, BSTR target) noexcept;

}  // namespace korlib::strings
