#include "base/converter.h"

#include <new>

namespace base {

void check_memory(UErrorCode status) {
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
}

Converter open_converter(const std::string& charset) {
  UErrorCode status = U_ZERO_ERROR;
  Converter opened(ucnv_open(charset.c_str(), &status));
  check_memory(status);
  if (U_FAILURE(status) || !opened) return nullptr;
  ucnv_setSubstString(opened.get(), u"?", 1, &status);
  check_memory(status);
  return opened;
}

}  // namespace base
