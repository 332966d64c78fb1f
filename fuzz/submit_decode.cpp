// SubmitDecode against a decoder written by its rules.
#include <cstdint>
#include <limits>

#include <korlib/combstr.h>

#include "text_input.h"
#include "utility/members.h"

namespace {

int digit_of(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return 16;
}

// The number at the beginning of a text, 0 for none: blanks, a sign, "0x" in a hexadecimal one, digits. It
// goes no further than a long does.
long number_in(std::wstring_view text, int base) {
  const auto drop = [&](std::size_t count) { text.remove_prefix(count); };
  while (!text.empty() && std::wstring_view(L" \t\n\v\f\r").find(text[0]) != text.npos) drop(1);
  const bool is_negative = text.starts_with(L'-');
  if (is_negative || text.starts_with(L'+')) drop(1);
  const bool is_prefixed = base == 16 && (text.starts_with(L"0x") || text.starts_with(L"0X"));
  if (is_prefixed && text.size() > 2 && digit_of(text[2]) < 16) drop(2);
  long value = 0;
  for (; !text.empty() && digit_of(text[0]) < base; drop(1)) {
    const int digit = is_negative ? -digit_of(text[0]) : digit_of(text[0]);
    if (__builtin_mul_overflow(value, base, &value) || __builtin_add_overflow(value, digit, &value)) {
      return is_negative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
    }
  }
  return value;
}

// A character more each time, or a whole reference; up to the first NUL.
std::wstring by_the_rules(std::wstring_view text) {
  std::wstring decoded;
  while (!text.empty()) {
    const std::size_t end = text.starts_with(L"&#") ? text.find(L';', 2) : text.npos;
    if (end == text.npos) {
      decoded.push_back(text[0]);
      text.remove_prefix(1);
      continue;
    }
    std::wstring_view number = text.substr(2, end - 2);
    const bool is_hexadecimal = number.starts_with(L'x');
    if (is_hexadecimal) number.remove_prefix(1);
    decoded.push_back(static_cast<wchar_t>(number_in(number, is_hexadecimal ? 16 : 10)));
    text.remove_prefix(end + 1);
  }
  return decoded.substr(0, decoded.find(L'\0'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = fuzz::text_from(data, size);
  const CComBSTR input(std::wstring_view{text});
  CComBSTR decoded;
  fuzz::require(mirt::utility::submit_decode(input, decoded.put()) == S_OK, "every text is decoded");
  fuzz::require(decoded.view() == by_the_rules(text), "the text");
  return 0;
}
