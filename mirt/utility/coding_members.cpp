// Base64Encode, Base64Decode, URLEncode, URLDecode.
#include <korlib/comvariant.h>

#include "frame/error.h"
#include "utility/bytes.h"
#include "utility/codecs.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

using Encoder = HRESULT (*)(const char* bytes, std::size_t n, CComBSTR& out);
using Decoder = HRESULT (*)(const wchar_t* text, std::size_t n, std::string& out);

HRESULT encode_with(Encoder encoder, const VARIANT* input, LONG charset, BSTR* encoded) {
  return guarded(encoded, [&] {
    InputBytes bytes;
    RETURN_IF_FAILED(bytes.take(input, charset));
    CComBSTR text;
    RETURN_IF_FAILED(encoder(bytes.data(), bytes.size(), text));
    *encoded = text.detach();
    return S_OK;
  });
}

HRESULT decode_with(Decoder decoder, BSTR text, LONG charset, VARIANT* decoded) {
  return guarded(decoded, [&] {
    const std::wstring_view characters = korlib::view_of(text);
    std::string bytes;
    RETURN_IF_FAILED(decoder(characters.data(), characters.size(), bytes));
    return give_decoded(bytes.data(), bytes.size(), charset, decoded);
  });
}

}  // namespace

HRESULT base64_encode(const VARIANT* input, LONG charset, BSTR* encoded) noexcept {
  return encode_with(Base64Encode, input, charset, encoded);
}

HRESULT url_encode(const VARIANT* input, LONG charset, BSTR* encoded) noexcept {
  return encode_with(URLEncode, input, charset, encoded);
}

HRESULT base64_decode(BSTR text, LONG charset, VARIANT* decoded) noexcept {
  return decode_with(Base64Decode, text, charset, decoded);
}

HRESULT url_decode(BSTR text, LONG charset, VARIANT* decoded) noexcept {
  return decode_with(URLDecode, text, charset, decoded);
}

}  // namespace mirt::utility
