// Base64 (RFC 4648, section 4) through the CryptoAPI names.
//
// A host may replace either. It owes one unbroken line when encoding; when decoding, the leniencies
// written at the decoder.
#include <array>
#include <cstring>
#include <cwchar>
#include <optional>

#include <korlib/wincrypt.h>

#include "compat/weak.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for every twelve bits, as they lie in memory.
struct Pair {
  wchar_t first;
  wchar_t second;
};
constexpr std::array<Pair, 4096> kPairs = [] {
  std::array<Pair, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    pairs[i] = {static_cast<wchar_t>(kAlphabet[i >> 6]), static_cast<wchar_t>(kAlphabet[i & 63])};
  }
  return pairs;
}();

void put_pair(wchar_t* out, unsigned int twelve_bits) { std::memcpy(out, &kPairs[twelve_bits], sizeof(Pair)); }

// Writes four characters for every started group of three bytes, and no NUL.
void encode(const BYTE* bytes, std::size_t count, wchar_t* out) {
  for (; count >= 3; count -= 3, bytes += 3, out += 4) {
    const unsigned int group = static_cast<unsigned int>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
    put_pair(out, group >> 12);
    put_pair(out + 2, group & 0xFFF);
  }
  if (count == 0) return;
  const unsigned int group = static_cast<unsigned int>(bytes[0] << 16 | (count == 2 ? bytes[1] << 8 : 0));
  put_pair(out, group >> 12);
  put_pair(out + 2, group & 0xFFF);
  if (count == 1) out[2] = L'=';
  out[3] = L'=';
}

// What a character is to the decoder: its six bits, or one of these. All have bits above the sixth.
constexpr std::uint8_t kInvalid = 0x40;
constexpr std::uint8_t kBlank = 0x80;
constexpr std::uint8_t kPadding = 0xC0;

constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  for (std::uint8_t& value : values) value = kInvalid;
  for (std::uint8_t i = 0; i < 64; ++i) values[static_cast<unsigned char>(kAlphabet[i])] = i;
  for (const char blank : {' ', '\r', '\n', '\t'}) values[static_cast<unsigned char>(blank)] = kBlank;
  values['='] = kPadding;
  return values;
}();

constexpr auto code_of(wchar_t c) { return static_cast<std::make_unsigned_t<wchar_t>>(c); }

std::uint8_t value_of(wchar_t c) {
  const auto code = code_of(c);
  return code < kValues.size() ? kValues[code] : kInvalid;
}

// Reads the characters of a text that count: blanks are dropped wherever they stand.
class Reader {
 public:
  Reader(const wchar_t* text, std::size_t length) : at_(text), end_(text + length) {}

  // The next four characters' values. Answers how many there were: fewer than four at the end only.
  std::size_t next_group(std::uint8_t (&group)[4]) {
    if (take_unbroken(group)) return 4;
    for (std::size_t i = 0; i < 4; ++i) {
      do {
        if (at_ == end_) return i;
        group[i] = value_of(*at_++);
      } while (group[i] == kBlank);
    }
    return 4;
  }

 private:
  // The usual case: four characters of the alphabet in a row.
  bool take_unbroken(std::uint8_t (&group)[4]) {
    if (end_ - at_ < 4) return false;
    const auto any = code_of(at_[0]) | code_of(at_[1]) | code_of(at_[2]) | code_of(at_[3]);
    if (any >= kValues.size()) return false;
    for (std::size_t i = 0; i < 4; ++i) group[i] = kValues[code_of(at_[i])];
    if ((group[0] | group[1] | group[2] | group[3]) & 0xC0) return false;
    at_ += 4;
    return true;
  }

  const wchar_t* at_;
  const wchar_t* end_;
};

// Decodes into `out`, or only counts when that is null. Each of the last two places of a group is judged
// by itself: "=" there leaves its byte out, also in the middle of the text ("QQ=A" is two bytes). The
// number of bytes; nothing for a text without groups, an unfinished one, or a character that has no
// business where it stands.
std::optional<std::size_t> decode(const wchar_t* text, std::size_t length, BYTE* out) {
  Reader reader(text, length);
  std::uint8_t v[4];
  std::size_t written = 0;
  std::size_t got = 0;
  bool is_empty = true;
  while ((got = reader.next_group(v)) == 4) {
    is_empty = false;
    if (((v[0] | v[1] | v[2] | v[3]) & 0xC0) == 0) {
      if (out) {
        out[written] = static_cast<BYTE>(v[0] << 2 | v[1] >> 4);
        out[written + 1] = static_cast<BYTE>(v[1] << 4 | v[2] >> 2);
        out[written + 2] = static_cast<BYTE>(v[2] << 6 | v[3]);
      }
      written += 3;
      continue;
    }
    const bool has_second = v[2] != kPadding;
    const bool has_third = v[3] != kPadding;
    if (((v[0] | v[1]) & 0xC0) || v[2] == kInvalid || v[3] == kInvalid) return std::nullopt;
    const auto third_value = static_cast<std::uint8_t>(has_second ? v[2] : 0);
    const auto emit = [&](int byte) {
      if (out) out[written] = static_cast<BYTE>(byte);
      ++written;
    };
    emit(v[0] << 2 | v[1] >> 4);
    if (has_second) emit(v[1] << 4 | third_value >> 2);
    if (has_third) emit(third_value << 6 | v[3]);
  }
  if (is_empty || got != 0) return std::nullopt;
  return written;
}

}  // namespace

// The sizes include the NUL, also the one that is answered when the text has been written. No line is
// ever broken, with CRYPT_STRING_NOCRLF or without.
MIRT_WEAK BOOL CryptBinaryToStringW(const BYTE* bytes, DWORD count, DWORD flags, wchar_t* text, DWORD* size) {
  if (!size || !bytes || !(flags & CRYPT_STRING_BASE64)) return FALSE;
  const std::uint64_t characters = (std::uint64_t{count} + 2) / 3 * 4;
  if (characters + 1 > UINT32_MAX) {
    *size = 0;
    return FALSE;
  }
  const DWORD needed = static_cast<DWORD>(characters + 1);
  const bool fits = !text || *size >= needed;
  *size = needed;
  if (!text || !fits) return fits ? TRUE : FALSE;
  encode(bytes, count, text);
  text[characters] = 0;
  return TRUE;
}

// A length of 0 means up to the NUL, and a NUL ends the text in any case. An empty text is no base64.
MIRT_WEAK BOOL CryptStringToBinaryW(const wchar_t* text, DWORD length, DWORD flags, BYTE* bytes, DWORD* size, DWORD*,
                                    DWORD*) {
  if (!size || !text || !(flags & CRYPT_STRING_BASE64)) return FALSE;
  const std::size_t end = length == 0 ? std::wcslen(text) : wcsnlen(text, length);
  // A buffer that holds the most that the text can give needs no counting first.
  const bool is_roomy = bytes && *size >= end / 4 * 3;
  const std::optional<std::size_t> decoded = decode(text, end, is_roomy ? bytes : nullptr);
  if (!decoded || *decoded > UINT32_MAX) {
    *size = 0;
    return FALSE;
  }
  const bool fits = !bytes || *size >= *decoded;
  *size = static_cast<DWORD>(*decoded);
  if (bytes && fits && !is_roomy) decode(text, end, bytes);
  return fits ? TRUE : FALSE;
}
