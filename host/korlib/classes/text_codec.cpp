#include "classes/text_codec.h"

#include <unicode/utf16.h>

#include <utility>

#include <korlib/text.h>
#include <korlib_host/unicode.h>

#include "base/converter.h"
#include "base/letter_case.h"
#include "classes/byte_store.h"

namespace korlib {
namespace {

// Encodes straight into the store when that can overwrite nothing.
template <class Encode>
bool write_encoded(ByteStore& store, std::size_t most, Encode encode) {
  if (store.position() == store.size()) {
    char* room = store.room_at_end(most);
    if (room) {
      store.commit(encode(room));
      return true;
    }
  }
  std::string encoded(most, '\0');
  encoded.resize(encode(encoded.data()));
  return store.write(encoded);
}

// All characters that the codec's next() finds.
template <class Codec>
CComBSTR read_each(Codec& codec, std::string_view bytes, bool continues, std::size_t about) {
  std::wstring text;
  text.reserve(about);
  for (; !bytes.empty(); continues = true) {
    const char32_t c = codec.next(bytes, continues);
    if (c != kNothing) text.push_back(static_cast<wchar_t>(c));
  }
  return CComBSTR(std::wstring_view(text));
}

class Utf8Codec final : public TextCodec {
 public:
  std::string_view mark() const override { return "\xEF\xBB\xBF"; }
  bool write(std::wstring_view text, ByteStore& store) override {
    const std::size_t most = text.size() * 4;
    return write_encoded(store, most, [&](char* room) { return utf32_utf8(text.data(), text.size(), room, most); });
  }
  char32_t next(std::string_view& bytes, bool) override {
    const Utf8Character first = first_utf8(bytes);
    bytes.remove_prefix(first.length);
    return first.value;
  }
  CComBSTR read(std::string_view bytes, bool) override {
    CComBSTR text;
    const std::size_t length = utf8_utf32(bytes.data(), bytes.size(), nullptr, 0);
    if (length >= kMaxBstrBytes / sizeof(wchar_t)) return text;
    text.attach(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (text.get()) utf8_utf32(bytes.data(), bytes.size(), text.get(), length);
    return text;
  }
};

class Utf16Codec final : public TextCodec {
 public:
  explicit Utf16Codec(bool is_big_endian) : low_(is_big_endian ? 1 : 0), high_(is_big_endian ? 0 : 1) {}

  std::string_view mark() const override { return low_ == 0 ? "\xFF\xFE" : "\xFE\xFF"; }
  bool write(std::wstring_view text, ByteStore& store) override {
    return write_encoded(store, text.size() * 4, [&](char* room) {
      char* at = room;
      for (const wchar_t wide : text) {
        const char32_t c = scalar(wide);
        if (c < 0x10000) {
          at = put(at, c);
        } else {
          at = put(put(at, 0xD7C0 + (c >> 10)), 0xDC00 + (c & 0x3FF));
        }
      }
      return static_cast<std::size_t>(at - room);
    });
  }
  char32_t next(std::string_view& bytes, bool) override {
    char32_t c = kReplacement;
    bytes.remove_prefix(decode(bytes, c));
    return c;
  }
  CComBSTR read(std::string_view bytes, bool continues) override {
    return read_each(*this, bytes, continues, bytes.size() / 2 + 1);
  }

 private:
  char* put(char* at, char32_t unit) const {
    at[low_] = static_cast<char>(unit & 0xFF);
    at[high_] = static_cast<char>(unit >> 8);
    return at + 2;
  }
  char32_t unit(std::string_view bytes) const {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[low_]) | static_cast<unsigned char>(bytes[high_])
                                                                               << 8);
  }
  // The number of bytes taken; what is not a character stays a replacement.
  std::size_t decode(std::string_view bytes, char32_t& c) const {
    if (bytes.size() < 2) return 1;
    const char32_t first = unit(bytes);
    if (!U16_IS_SURROGATE(first)) {
      c = first;
      return 2;
    }
    if (U16_IS_SURROGATE_TRAIL(first) || bytes.size() < 4) return 2;
    const char32_t second = unit(bytes.substr(2));
    if (!U16_IS_TRAIL(second)) return 2;
    c = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(first, second));
    return 4;
  }

  std::size_t low_;
  std::size_t high_;
};

class ConverterCodec final : public TextCodec {
 public:
  explicit ConverterCodec(base::Converter converter) : converter_(std::move(converter)) {}

  bool write(std::wstring_view text, ByteStore& store) override {
    const std::u16string units = to_utf16(text);
    std::string encoded;
    const UChar* at = units.data();
    const UChar* const end = at + units.size();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_resetFromUnicode(converter_.get());
    do {
      char buffer[1024];
      char* to = buffer;
      status = U_ZERO_ERROR;
      ucnv_fromUnicode(converter_.get(), &to, buffer + sizeof buffer, &at, end, nullptr, true, &status);
      encoded.append(buffer, to);
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    base::check_memory(status);
    return store.write(encoded);
  }
  char32_t next(std::string_view& bytes, bool continues) override {
    if (!continues) ucnv_resetToUnicode(converter_.get());
    const char* at = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    const UChar32 c = ucnv_getNextUChar(converter_.get(), &at, at + bytes.size(), &status);
    // Bytes that only switch the converter's state end without a character.
    bytes = at == bytes.data() ? bytes.substr(bytes.size()) : bytes.substr(static_cast<std::size_t>(at - bytes.data()));
    if (status == U_INDEX_OUTOFBOUNDS_ERROR) return kNothing;
    return U_FAILURE(status) ? kReplacement : static_cast<char32_t>(c);
  }
  CComBSTR read(std::string_view bytes, bool continues) override { return read_each(*this, bytes, continues, 0); }

 private:
  base::Converter converter_;
};

// ASCII letters and digits in lower case; empty when the name holds anything that no charset name does.
std::string plain_name(std::wstring_view charset) {
  std::string name;
  if (charset.size() > 60) return name;
  for (const wchar_t c : charset) {
    if (c <= L' ' || c > L'~' || c == L',') return {};  // a comma would be a converter's option
    name.push_back(static_cast<char>(base::ascii_lower(c)));
  }
  return name;
}

}  // namespace

std::unique_ptr<TextCodec> open_codec(std::wstring_view charset) {
  const std::string name = plain_name(charset);
  if (name.empty()) return nullptr;
  if (name == "unicode" || name == "utf-16" || name == "utf-16le") return std::make_unique<Utf16Codec>(false);
  if (name == "unicodefffe" || name == "utf-16be") return std::make_unique<Utf16Codec>(true);
  if (name == "utf-8" || name == "utf8") return std::make_unique<Utf8Codec>();
  base::Converter converter = base::open_converter(name);
  return converter ? std::make_unique<ConverterCodec>(std::move(converter)) : nullptr;
}

}  // namespace korlib
