// HTMLEncode and Trim against their rules, one character at a time.
#include <korlib/combstr.h>

#include "text_input.h"
#include "utility/members.h"

namespace {

std::wstring encoded_by_the_rules(const std::wstring& text) {
  std::wstring encoded;
  for (const wchar_t c : text) {
    switch (c) {
      case L'<':
        encoded += L"&lt;";
        break;
      case L'>':
        encoded += L"&gt;";
        break;
      case L'"':
        encoded += L"&quot;";
        break;
      case L'&':
        encoded += L"&amp;";
        break;
      default:
        encoded += c;
    }
  }
  return encoded;
}

bool is_blank(wchar_t c) { return c == L' ' || c == 0x3000 || c == L'\t' || c == L'\r' || c == L'\n'; }

std::wstring trimmed_by_the_rules(std::wstring text) {
  while (!text.empty() && is_blank(text.back())) text.pop_back();
  while (!text.empty() && is_blank(text.front())) text.erase(text.begin());
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = fuzz::text_from(data, size);
  const CComBSTR input(std::wstring_view{text});
  CComBSTR encoded;
  fuzz::require(mirt::utility::html_encode(input, encoded.put()) == S_OK, "every text is encoded");
  fuzz::require(encoded.view() == encoded_by_the_rules(text), "the encoded text");

  CComBSTR trimmed;
  fuzz::require(mirt::utility::trim(input, trimmed.put()) == S_OK, "every text is trimmed");
  fuzz::require(trimmed.view() == trimmed_by_the_rules(text), "the trimmed text");
  fuzz::require((trimmed.get() == nullptr) == trimmed.empty(), "nothing is a null string");
  return 0;
}
