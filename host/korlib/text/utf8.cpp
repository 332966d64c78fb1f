// UTF-32 to UTF-8 and back. Runs of ASCII, which are most of every page, go sixteen characters at a time
// through loops that the compiler turns into vector code.
#include <korlib/text.h>
#include <korlib_host/unicode.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kBlock = 16;
using korlib::kReplacement;
using korlib::Utf8Character;

// Characters below 0x80 at the start of [at, end).
template <class Unit>
std::size_t ascii_run(const Unit* at, const Unit* end) {
  const Unit* const start = at;
  while (static_cast<std::size_t>(end - at) >= kBlock) {
    Unit seen = 0;
    for (std::size_t i = 0; i < kBlock; ++i) seen = static_cast<Unit>(seen | at[i]);
    if (seen >= 0x80) break;
    at += kBlock;
  }
  while (at != end && *at < 0x80) ++at;
  return static_cast<std::size_t>(at - start);
}

template <class From, class To>
void copy_ascii(const From* from, std::size_t count, To* to) {
  for (; count >= kBlock; count -= kBlock, from += kBlock, to += kBlock) {
    To block[kBlock];  // of its own, so that no write can change what is still to be read
    for (std::size_t i = 0; i < kBlock; ++i) block[i] = static_cast<To>(from[i]);
    std::memcpy(to, block, sizeof block);
  }
  for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<To>(from[i]);
}

struct Lead {
  std::size_t trails;
  unsigned first_low;   // the range that the byte after the lead must lie in: it is what keeps out
  unsigned first_high;  // overlong forms, surrogates and values above U+10FFFF
  char32_t bits;
};

Lead lead_of(unsigned byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF, byte & 0x1Fu};
  if (byte == 0xE0) return {2, 0xA0, 0xBF, 0};
  if (byte == 0xED) return {2, 0x80, 0x9F, 0xD};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF, byte & 0x0Fu};
  if (byte == 0xF0) return {3, 0x90, 0xBF, 0};
  if (byte == 0xF4) return {3, 0x80, 0x8F, 4};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF, byte & 0x07u};
  return {0, 0, 0, 0};
}

// One character that begins with a byte of 0x80 or above.
Utf8Character decode(const unsigned char* at, const unsigned char* end) {
  const Lead lead = lead_of(*at);
  if (lead.trails == 0) return {kReplacement, 1, false};
  char32_t character = lead.bits;
  for (std::size_t i = 1; i <= lead.trails; ++i) {
    const unsigned low = i == 1 ? lead.first_low : 0x80;
    const unsigned high = i == 1 ? lead.first_high : 0xBF;
    if (at + i == end || at[i] < low || at[i] > high) return {kReplacement, i, false};
    character = character << 6 | (at[i] & 0x3Fu);
  }
  return {character, lead.trails + 1, true};
}

struct Encoded {
  char bytes[4];
  std::size_t length;
};

Encoded encode(char32_t c) {
  const auto trail = [c](unsigned shift) { return static_cast<char>(0x80u | (c >> shift & 0x3Fu)); };
  if (c < 0x80) return {{static_cast<char>(c)}, 1};
  if (c < 0x800) return {{static_cast<char>(0xC0u | c >> 6), trail(0)}, 2};
  if (c < 0x10000) return {{static_cast<char>(0xE0u | c >> 12), trail(6), trail(0)}, 3};
  return {{static_cast<char>(0xF0u | c >> 18), trail(12), trail(6), trail(0)}, 4};
}

}  // namespace

std::size_t utf32_utf8(const wchar_t* text, std::size_t length, char* out, std::size_t capacity) {
  const auto* at = reinterpret_cast<const std::uint32_t*>(text);
  const auto* const end = at + length;
  std::size_t needed = 0;
  bool is_full = false;  // set by the first character that does not fit: nothing after it is written
  while (at != end) {
    if (*at < 0x80) {
      const std::size_t run = ascii_run(at, end);
      if (!is_full) {
        const std::size_t fits = std::min(run, capacity - needed);
        copy_ascii(at, fits, out + needed);
        is_full = fits < run;
      }
      needed += run;
      at += run;
      continue;
    }
    const Encoded encoded = encode(korlib::scalar(static_cast<wchar_t>(*at++)));
    if (!is_full && encoded.length > capacity - needed) is_full = true;
    if (!is_full) std::memcpy(out + needed, encoded.bytes, encoded.length);
    needed += encoded.length;
  }
  return needed;
}

std::size_t utf8_utf32(const char* bytes, std::size_t length, wchar_t* out, std::size_t capacity) {
  const auto* at = reinterpret_cast<const unsigned char*>(bytes);
  const auto* const end = at + length;
  std::size_t needed = 0;
  while (at != end) {
    if (*at < 0x80) {
      const std::size_t run = ascii_run(at, end);
      if (needed < capacity) copy_ascii(at, std::min(run, capacity - needed), out + needed);
      needed += run;
      at += run;
      continue;
    }
    const Utf8Character decoded = decode(at, end);
    if (needed < capacity) out[needed] = static_cast<wchar_t>(decoded.value);
    ++needed;
    at += decoded.length;
  }
  return needed;
}

namespace korlib {

Utf8Character first_utf8(std::string_view bytes) {
  const auto* const at = reinterpret_cast<const unsigned char*>(bytes.data());
  return *at < 0x80 ? Utf8Character{*at, 1, true} : decode(at, at + bytes.size());
}

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
