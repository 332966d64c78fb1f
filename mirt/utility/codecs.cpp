#include "utility/codecs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include <korlib/wincrypt.h>

#include "utility/bytes.h"

namespace mirt::utility {

namespace {

constexpr DWORD kOneLine = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

constexpr std::array<bool, 256> kUnreserved = [] {
  std::array<bool, 256> unreserved{};
  for (unsigned char c = '0'; c <= '9'; ++c) unreserved[c] = true;
  for (unsigned char c = 'A'; c <= 'Z'; ++c) unreserved[c] = true;
  for (unsigned char c = 'a'; c <= 'z'; ++c) unreserved[c] = true;
  for (const unsigned char c : {'-', '_', '.', '~'}) unreserved[c] = true;
  return unreserved;
}();

// What percent-encoding makes of a byte: one character or three.
struct Encoded {
  wchar_t text[3];
  std::uint32_t length;
};
constexpr std::array<Encoded, 256> kEncoded = [] {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::array<Encoded, 256> encoded{};
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    encoded[i] = {{L'%', kDigits[i >> 4], kDigits[i & 15]}, 3};
    if (kUnreserved[i]) encoded[i] = {{static_cast<wchar_t>(i)}, 1};
  }
  return encoded;
}();

const Encoded& encoded(char byte) { return kEncoded[static_cast<unsigned char>(byte)]; }

constexpr unsigned int kNoDigit = 16;
constexpr std::array<std::uint8_t, 256> kDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  for (std::uint8_t& value : values) value = kNoDigit;
  for (std::uint8_t i = 0; i < 10; ++i) values[std::size_t{'0'} + i] = i;
  for (std::uint8_t i = 0; i < 6; ++i) {
    values[std::size_t{'A'} + i] = static_cast<std::uint8_t>(10 + i);
    values[std::size_t{'a'} + i] = static_cast<std::uint8_t>(10 + i);
  }
  return values;
}();

unsigned char low_byte(wchar_t c) { return static_cast<unsigned char>(c); }

}  // namespace

HRESULT Base64Encode(const char* bytes, std::size_t n, CComBSTR& out) {
  const auto* data = reinterpret_cast<const BYTE*>(bytes);
  DWORD size = 0;
  if (n > UINT32_MAX) return E_OUTOFMEMORY;
  const DWORD count = static_cast<DWORD>(n);
  if (!CryptBinaryToStringW(data, count, kOneLine, nullptr, &size) || size == 0) return E_FAIL;
  RETURN_IF_FAILED(new_text(size - 1, out.put()));  // a string has room for the NUL that the size counts
  if (!CryptBinaryToStringW(data, count, kOneLine, out.get(), &size)) {
    out.reset();
    return E_FAIL;
  }
  return S_OK;
}

HRESULT Base64Decode(const wchar_t* text, std::size_t n, std::string& out) {
  out.clear();
  if (n == 0 || n > UINT32_MAX) return E_FAIL;  // a length of 0 would mean "up to the NUL"
  out.resize(n / 4 * 3);
  // Never asked with a null buffer, which would be a question for the size.
  BYTE none = 0;
  auto* target = out.empty() ? &none : reinterpret_cast<BYTE*>(out.data());
  DWORD size = static_cast<DWORD>(out.size());
  if (!CryptStringToBinaryW(text, static_cast<DWORD>(n), CRYPT_STRING_BASE64, target, &size, nullptr, nullptr)) {
    out.clear();
    return E_FAIL;
  }
  out.resize(size);
  return S_OK;
}

bool URL_is_unreserved(unsigned char byte) { return kUnreserved[byte]; }

HRESULT URLEncode(const char* bytes, std::size_t n, CComBSTR& out) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < n; ++i) length += encoded(bytes[i]).length;
  RETURN_IF_FAILED(new_text(length, out.put()));
  wchar_t* target = out.get();
  // A row of the table is written whole while there is room for one, and the next written over what is
  // too much of it: whether a byte gives one character or three follows no pattern that a processor
  // could foresee.
  std::size_t i = 0;
  for (; n - i >= sizeof(Encoded) / sizeof(wchar_t); ++i) {
    const Encoded& each = encoded(bytes[i]);
    std::memcpy(target, &each, sizeof each);
    target += each.length;
  }
  for (; i < n; ++i) target = std::copy_n(encoded(bytes[i]).text, encoded(bytes[i]).length, target);
  return S_OK;
}

HRESULT URLDecode(const wchar_t* text, std::size_t n, std::string& out) {
  out.resize(n);
  std::size_t written = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char byte = low_byte(text[i]);
    if (URL_is_unreserved(byte)) {
      out[written++] = static_cast<char>(byte);
      continue;
    }
    if (byte != '%' || n - i < 3) return E_FAIL;
    const unsigned int high = kDigitValues[low_byte(text[i + 1])];
    const unsigned int low = kDigitValues[low_byte(text[i + 2])];
    if (high == kNoDigit) return E_FAIL;
    // The number ends at the first character that is not a digit: "%4z" is the byte 4.
    out[written++] = static_cast<char>(low == kNoDigit ? high : high << 4 | low);
    i += 2;
  }
  out.resize(written);
  return S_OK;
}

}  // namespace mirt::utility
