// Base64Decode against a decoder written by its rules, one character at a time.
#include <optional>

#include <korlib/comvariant.h>

#include "decoded_value.h"
#include "text_input.h"
#include "utility/codecs.h"
#include "utility/members.h"

namespace {

int sextet(wchar_t c) {
  if (c >= L'A' && c <= L'Z') return c - L'A';
  if (c >= L'a' && c <= L'z') return c - L'a' + 26;
  if (c >= L'0' && c <= L'9') return c - L'0' + 52;
  return c == L'+' ? 62 : c == L'/' ? 63 : -1;
}

std::optional<std::string> by_the_rules(const std::wstring& text) {
  std::wstring kept;
  for (const wchar_t c : text) {
    if (c == 0) break;
    if (c != L' ' && c != L'\r' && c != L'\n' && c != L'\t') kept.push_back(c);
  }
  if (kept.empty() || kept.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  for (std::size_t i = 0; i < kept.size(); i += 4) {
    const int a = sextet(kept[i]);
    const int b = sextet(kept[i + 1]);
    const int c = kept[i + 2] == L'=' ? 0 : sextet(kept[i + 2]);
    const int d = kept[i + 3] == L'=' ? 0 : sextet(kept[i + 3]);
    if (a < 0 || b < 0 || c < 0 || d < 0) return std::nullopt;
    bytes.push_back(static_cast<char>(a << 2 | b >> 4));
    if (kept[i + 2] != L'=') bytes.push_back(static_cast<char>(b << 4 | c >> 2));
    if (kept[i + 3] != L'=') bytes.push_back(static_cast<char>(c << 6 | d));
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const LONG charset = static_cast<LONG>(data[0] % 4) - 2;
  const std::wstring text = fuzz::text_from(data + 1, size - 1);
  const std::optional<std::string> expected = by_the_rules(text);
  const std::string bytes =
      fuzz::decoded_by_rules(text, charset, expected, mirt::utility::Base64Decode, mirt::utility::base64_decode);
  fuzz::require(expected || bytes.empty(), "no bytes from a text that cannot be decoded");

  if (bytes.empty()) return 0;
  CComBSTR encoded;
  std::string again;
  fuzz::require(SUCCEEDED(mirt::utility::Base64Encode(bytes.data(), bytes.size(), encoded)), "encoding");
  fuzz::require(SUCCEEDED(mirt::utility::Base64Decode(encoded, encoded.length(), again)), "decoding what was encoded");
  fuzz::require(again == bytes, "the identity");
  fuzz::require(encoded.length() == (bytes.size() + 2) / 3 * 4, "the length of what was encoded");
  return 0;
}
