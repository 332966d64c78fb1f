// URLDecode, and that it undoes URLEncode.
#include <korlib/comvariant.h>

#include "text_input.h"
#include "utility/codecs.h"
#include "utility/members.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const LONG charset = static_cast<LONG>(data[0] % 4) - 2;
  const std::wstring text = fuzz::text_from(data + 1, size - 1);
  std::string bytes;
  const HRESULT hr = mirt::utility::URLDecode(text.data(), text.size(), bytes);
  if (SUCCEEDED(hr)) fuzz::require(bytes.size() <= text.size(), "decoding does not lengthen");

  CComVariant value;
  const CComBSTR input(std::wstring_view{text});
  fuzz::require(SUCCEEDED(mirt::utility::url_decode(input, charset, &value)) == SUCCEEDED(hr), "the member");

  // The input's own bytes, there and back.
  const std::string raw(reinterpret_cast<const char*>(data), size);
  CComBSTR encoded;
  std::string again;
  fuzz::require(SUCCEEDED(mirt::utility::URLEncode(raw.data(), raw.size(), encoded)), "encoding");
  fuzz::require(SUCCEEDED(mirt::utility::URLDecode(encoded, encoded.length(), again)), "decoding what was encoded");
  fuzz::require(again == raw, "the identity");
  return 0;
}
