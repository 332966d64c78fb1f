// Text to the bytes of a character set and back.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <korlib/combstr.h>

namespace korlib {

class ByteStore;

// What decoding gives when the last bytes held no character, a change of state only.
inline constexpr char32_t kNothing = 0xFFFFFFFF;

// One character set. Holds a converter's state, so every stream has its own.
class TextCodec {
 public:
  virtual ~TextCodec() = default;

  // The byte-order mark that text of this charset begins with; empty for most.
  virtual std::string_view mark() const { return {}; }
  // Appends or overwrites at the store's position. False when the store would become too large.
  [[nodiscard]] virtual bool write(std::wstring_view text, ByteStore& store) = 0;
  // Decodes one character, or gives kNothing, and moves `bytes` past it; `bytes` is not empty. `continues` is true
  // when they follow directly on those decoded last.
  virtual char32_t next(std::string_view& bytes, bool continues) = 0;
  // Decodes all bytes. Null where there is no memory for so long a text.
  virtual CComBSTR read(std::string_view bytes, bool continues) = 0;
};

// The charset of that name, in any letter case; null when there is none.
std::unique_ptr<TextCodec> open_codec(std::wstring_view charset);

}  // namespace korlib
