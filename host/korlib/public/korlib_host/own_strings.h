// Strings as this runtime lays them out, for those of its own programs that are asked for a length all the time.
// Components ask SysStringLen(), which another host may have in another way.
#pragma once

#include <korlib/bstr.h>

#include <cstring>
#include <string_view>

namespace korlib_host {

// SysStringByteLen(): the length lies right before the characters.
inline UINT byte_length_of(BSTR text) noexcept {
  UINT bytes = 0;
  if (text) std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
  return bytes;
}

// The characters of a string; none for null.
inline std::wstring_view characters_of(BSTR text) noexcept {
  return {text ? text : L"", byte_length_of(text) / sizeof(wchar_t)};
}

}  // namespace korlib_host
