// URLDecode against a decoder written by its rules, and that it undoes URLEncode.
#include <cctype>
#include <optional>

#include <korlib/comvariant.h>

#include "decoded_value.h"
#include "text_input.h"
#include "utility/codecs.h"
#include "utility/members.h"

namespace {

bool stands_for_itself(unsigned char c) {
  return (c < 128 && std::isalnum(c)) || c == '-' || c == '_' || c == '.' || c == '~';
}

// Each character by its low eight bits. Behind "%" come two: a digit, and what need not be one.
std::optional<std::string> by_the_rules(const std::wstring& text) {
  std::string low;
  for (const wchar_t c : text) low.push_back(static_cast<char>(c & 0xFF));
  std::string bytes;
  for (std::size_t i = 0; i < low.size(); ++i) {
    if (low[i] != '%') {
      if (!stands_for_itself(static_cast<unsigned char>(low[i]))) return std::nullopt;
      bytes.push_back(low[i]);
      continue;
    }
    std::string digits = low.substr(i + 1, 2);
    if (digits.size() < 2 || !std::isxdigit(static_cast<unsigned char>(digits[0]))) return std::nullopt;
    if (!std::isxdigit(static_cast<unsigned char>(digits[1]))) digits.pop_back();
    bytes.push_back(static_cast<char>(std::stoi(digits, nullptr, 16)));
    i += 2;
  }
  return bytes;
}

std::wstring encoded_by_the_rules(const std::string& bytes) {
  std::wstring text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    char three[4];
    std::snprintf(three, sizeof three, "%%%02X", code);
    text += stands_for_itself(code) ? std::wstring(1, static_cast<wchar_t>(code)) : std::wstring(three, three + 3);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const LONG charset = static_cast<LONG>(data[0] % 4) - 2;
  const std::wstring text = fuzz::text_from(data + 1, size - 1);
  fuzz::decoded_by_rules(text, charset, by_the_rules(text), mirt::utility::URLDecode, mirt::utility::url_decode);

  // The input's own bytes, there and back.
  const std::string raw(reinterpret_cast<const char*>(data), size);
  CComBSTR encoded;
  std::string again;
  fuzz::require(mirt::utility::URLEncode(raw.data(), raw.size(), encoded) == S_OK, "encoding");
  fuzz::require(encoded.view() == encoded_by_the_rules(raw), "what was encoded");
  fuzz::require(mirt::utility::URLDecode(encoded, encoded.length(), again) == S_OK, "decoding what was encoded");
  fuzz::require(again == raw, "the identity");
  return 0;
}
