// Base64 (RFC 4648, section 4) through the CryptoAPI names.
//
// A host may replace either. It owes one unbroken line when encoding; when decoding, the leniencies
// written at the decoder.
#include <array>
#include <cstring>
#include <cwchar>
#include <optional>

#include <korlib/wincrypt.h>

#include "compat/processor.h"
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

#ifdef MIRT_X86
// `value` in the bytes of c where `first <= c <= last`, zero in the others; bytes are signed.
MIRT_WITH_AVX2 inline __m256i in_range(__m256i c, char first, char last, int value) {
  const __m256i is_below = _mm256_cmpgt_epi8(_mm256_set1_epi8(first), c);
  const __m256i is_above = _mm256_cmpgt_epi8(c, _mm256_set1_epi8(last));
  return _mm256_andnot_si256(_mm256_or_si256(is_below, is_above), _mm256_set1_epi8(static_cast<char>(value)));
}

// Thirty-two characters in bytes, in their order. What does not fit into a byte becomes one that is not of the
// alphabet.
MIRT_WITH_AVX2 inline __m256i narrowed(const wchar_t* text) {
  const auto* const at = reinterpret_cast<const __m256i*>(text);
  const __m256i low = _mm256_packus_epi32(_mm256_loadu_si256(at), _mm256_loadu_si256(at + 1));
  const __m256i high = _mm256_packus_epi32(_mm256_loadu_si256(at + 2), _mm256_loadu_si256(at + 3));
  const __m256i halves_in_turn = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  return _mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), halves_in_turn);
}

// As decode_unbroken(), thirty-two characters at a time: stops before those of which one is not of the alphabet.
MIRT_WITH_AVX2 void decode_by_vectors(Decoding& decoding) {
  auto [at, end, out, written] = decoding;
  const __m256i low_bytes_first = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                                   2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i without_gaps = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
  for (; end - at >= 32; at += 32, written += 24) {
    const __m256i c = narrowed(at);
    // What makes a character its six bits when it is added: never zero within the alphabet.
    __m256i shift = in_range(c, 'A', 'Z', -'A');
    shift = _mm256_or_si256(shift, in_range(c, 'a', 'z', 26 - 'a'));
    shift = _mm256_or_si256(shift, in_range(c, '0', '9', 52 - '0'));
    shift = _mm256_or_si256(shift, in_range(c, '+', '+', 62 - '+'));
    shift = _mm256_or_si256(shift, in_range(c, '/', '/', 63 - '/'));
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(shift, _mm256_setzero_si256()))) break;
    const __m256i sextets = _mm256_add_epi8(c, shift);
    const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi16(0x0140));  // 64 * first + second
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));  // 4096 * first + second
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, low_bytes_first), without_gaps);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + written), _mm256_castsi256_si128(bytes));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + written + 16), _mm256_extracti128_si256(bytes, 1));
  }
  decoding.at = at;
  decoding.written = written;
}
#endif

// The usual case: groups of four characters of the alphabet in a row. Stops before anything else. Works
// on its own copy, which its writes cannot change.
void decode_unbroken(Decoding& decoding) {
#ifdef MIRT_X86
  if (decoding.out && decoding.end - decoding.at >= 32 && kor_compat::has_avx2()) decode_by_vectors(decoding);
#endif
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
// many there were; fewer than four at the end only, which a NUL is as well.
std::size_t next_group(Decoding& decoding, std::uint8_t (&group)[4]) {
  for (std::size_t i = 0; i < 4; ++i) {
    do {
      if (decoding.at == decoding.end || *decoding.at == L'\0') return i;
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
  const std::size_t end = length == 0 ? std::wcslen(text) : length;
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
