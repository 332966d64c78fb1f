#include <korlib_host/unicode.h>

#include <korlib/text.h>

namespace korlib {

std::string to_utf8(std::wstring_view text) {
  std::string bytes(utf32_utf8(text.data(), text.size(), nullptr, 0), '\0');
  utf32_utf8(text.data(), text.size(), bytes.data(), bytes.size());
  return bytes;
}

std::wstring to_wide(std::string_view bytes) {
  std::wstring text(bytes.size(), L'\0');  // one byte never becomes more than one character
  text.resize(utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size()));
  return text;
}

}  // namespace korlib
