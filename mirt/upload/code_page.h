// Bytes of an upload as text.
#pragma once

#include <string_view>

#include <korlib/combstr.h>

// The text of the bytes in front of the first NUL. A code page that the host does not know is E_FAIL. So
// is any but UTF-8 on a host that converts no other, unless the bytes are ASCII and mean the same in all.
HRESULT bytes_to_text(std::string_view bytes, UINT code_page, CComBSTR* text);
