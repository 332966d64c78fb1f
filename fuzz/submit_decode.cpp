// SubmitDecode: never longer than its input, and nothing but its references changes.
#include <korlib/combstr.h>

#include "text_input.h"
#include "utility/members.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = fuzz::text_from(data, size);
  const CComBSTR input(std::wstring_view{text});
  CComBSTR decoded;
  fuzz::require(SUCCEEDED(mirt::utility::submit_decode(input, decoded.put())), "every text is decoded");
  fuzz::require(decoded.length() <= text.size(), "decoding does not lengthen");
  fuzz::require(decoded.view().find(L'\0') == std::wstring_view::npos, "the text ends at the first NUL");
  const std::wstring_view up_to_nul(text.c_str());
  const std::size_t first = up_to_nul.find(L"&#");
  fuzz::require(decoded.view().substr(0, first) == up_to_nul.substr(0, first), "what precedes a reference");
  return 0;
}
