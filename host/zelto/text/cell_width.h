// How wide characters are where each has its cell, in a terminal and in a page's preformatted text.
#pragma once

namespace zelto {

// 2 for those of East Asia and pictures, 0 for what stands upon the character before, 1 for all others.
int cell_width(wchar_t c);

}  // namespace zelto
