#include "text/cell_width.h"

#include <unicode/uchar.h>

namespace zelto {

int cell_width(wchar_t c) {
  const auto code = static_cast<UChar32>(static_cast<char32_t>(c));
  const auto kind = U_MASK(u_charType(code));
  if ((kind & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0 && c != 0xAD) return 0;
  if (u_hasBinaryProperty(code, UCHAR_EMOJI_MODIFIER)) return 0;
  const int width = u_getIntPropertyValue(code, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace zelto
