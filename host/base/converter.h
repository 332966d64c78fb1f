// A converter between a charset's bytes and UTF-16, of the Unicode library, closed when its holder goes.
#pragma once

#include <unicode/ucnv.h>

#include <memory>
#include <string>

namespace base {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// Throws std::bad_alloc when that is what the library says.
void check_memory(UErrorCode status);

// Writes "?" for what the charset does not have. Null when the library does not know the charset; throws
// std::bad_alloc.
Converter open_converter(const std::string& charset);

}  // namespace base
