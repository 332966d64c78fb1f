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
constexpr std::uint8_t kNoSextet = 0xC0;  // the bits above the sixth

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

// The text that is still to be read, and where its bytes go; without a place for them they are counted
// only.
struct Decoding {
  const wchar_t* at;
  const wchar_t* end;
  BYTE* out;
  std::size_t written = 0;

  void put(int byte) {
    if (out) out[written] = static_cast<BYTE>(byte);
    ++written;
  }
};

// The usual case: groups of four characters of the alphabet in a row. Stops before anything else. Works
// on its own copy, which its writes cannot change.
void decode_unbroken(Decoding& decoding) {
  auto [at, end, out, written] = decoding;
  for (; end - at >= 4; at += 4, written += 3) {
    const auto any = code_of(at[0]) | code_of(at[1]) | code_of(at[2]) | code_of(at[3]);
    if (any >= kValues.size()) break;
    const unsigned int a = kValues[code_of(at[0])];
    const unsigned int b = kValues[code_of(at[1])];
    const unsigned int c = kValues[code_of(at[2])];
    const unsigned int d = kValues[code_of(at[3])];
    if ((a | b | c | d) & kNoSextet) break;
    if (!out) continue;
    const unsigned int group = a << 18 | b << 12 | c << 6 | d;
    out[written] = static_cast<BYTE>(group >> 16);
    out[written + 1] = static_cast<BYTE>(group >> 8);
    out[written + 2] = static_cast<BYTE>(group);
  }
  decoding.at = at;
  decoding.written = written;
}

// The values of the next four characters that count: blanks are dropped wherever they stand. Answers how
// many there were; fewer than four at the end only.
std::size_t next_group(Decoding& decoding, std::uint8_t (&group)[4]) {
  for (std::size_t i = 0; i < 4; ++i) {
    do {
      if (decoding.at == decoding.end) return i;
      group[i] = value_of(*decoding.at++);
    } while (group[i] == kBlank);
  }
  return 4;
}

// Each of the last two places counts on its own: "=" there leaves its byte out, also in the middle of
// the text ("QQ=A" is two bytes). False for a character that is not allowed at its place.
bool decode_group(const std::uint8_t (&group)[4], Decoding& decoding) {
  const auto [a, b, c, d] = group;
  if (((a | b) & kNoSextet) || c == kInvalid || d == kInvalid) return false;
  const bool has_second = c != kPadding;
  const bool has_third = d != kPadding;
  const int third_sextet = has_second ? c : 0;
  decoding.put(a << 2 | b >> 4);
  if (has_second) decoding.put(b << 4 | third_sextet >> 2);
  if (has_third) decoding.put(third_sextet << 6 | d);
  return true;
}

// Decodes into `out`, or only counts when that is null. The number of bytes; nothing for a text without
// groups or with an unfinished one, or one that cannot be decoded.
std::optional<std::size_t> decode(const wchar_t* text, std::size_t length, BYTE* out) {
  Decoding decoding{text, text + length, out};
  decode_unbroken(decoding);
  bool is_empty = decoding.at == text;
  std::uint8_t group[4];
  std::size_t got = 0;
  while ((got = next_group(decoding, group)) == 4) {
    if (!decode_group(group, decoding)) return std::nullopt;
    is_empty = false;
    decode_unbroken(decoding);
  }
  if (is_empty || got != 0) return std::nullopt;
  return decoding.written;
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

// A length of 0 means up to the NUL, and a NUL ends the text in any case. Empty text is not valid base64.
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
