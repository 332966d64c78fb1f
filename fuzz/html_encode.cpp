// HTMLEncode and Trim: the encoded text holds no markup, and reads back as it was.
#include <korlib/combstr.h>

#include "text_input.h"
#include "utility/members.h"

namespace {

// Reads the four references that the encoder writes.
std::wstring read_back(std::wstring_view encoded) {
  constexpr std::pair<std::wstring_view, wchar_t> kReferences[] = {
      {L"&lt;", L'<'}, {L"&gt;", L'>'}, {L"&quot;", L'"'}, {L"&amp;", L'&'}};
  std::wstring text;
  while (!encoded.empty()) {
    wchar_t character = encoded[0];
    std::size_t length = 1;
    for (const auto& [reference, stands_for] : kReferences) {
      if (!encoded.starts_with(reference)) continue;
      character = stands_for;
      length = reference.size();
    }
    text.push_back(character);
    encoded.remove_prefix(length);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = fuzz::text_from(data, size);
  const CComBSTR input(std::wstring_view{text});
  CComBSTR encoded;
  fuzz::require(SUCCEEDED(mirt::utility::html_encode(input, encoded.put())), "every text is encoded");
  fuzz::require(encoded.view().find_first_of(L"<>\"") == std::wstring_view::npos, "no markup is left");
  fuzz::require(read_back(encoded.view()) == text, "the identity");

  CComBSTR trimmed;
  fuzz::require(SUCCEEDED(mirt::utility::trim(input, trimmed.put())), "every text is trimmed");
  fuzz::require(text.find(trimmed.view()) != std::wstring::npos, "what is left was there");
  fuzz::require((trimmed.get() == nullptr) == trimmed.empty(), "nothing is a null string");
  return 0;
}
