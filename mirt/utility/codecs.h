// Base64 and percent-encoding between bytes and text.
// An encoder makes its string once, at its exact size.
#pragma once

#include <cstddef>
#include <string>

#include <korlib/combstr.h>

namespace mirt::utility {

// One unbroken line, padded; empty for no bytes.
HRESULT Base64Encode(const char* bytes, std::size_t n, CComBSTR& out);
// E_FAIL for what CryptStringToBinaryW (compat/base64.cpp) refuses, the empty text included.
HRESULT Base64Decode(const wchar_t* text, std::size_t n, std::string& out);

// ASCII letters, digits and "-", "_", ".", "~" (RFC 3986, section 2.3).
bool URL_is_unreserved(unsigned char byte);
// Every other byte becomes "%" and two upper-case digits; a space too.
HRESULT URLEncode(const char* bytes, std::size_t n, CComBSTR& out);
// Takes each character by its low eight bits. E_FAIL for a "%" without two characters after it or with
// a first one that is not a hexadecimal digit, and for any reserved character: "+" is not a space.
HRESULT URLDecode(const wchar_t* text, std::size_t n, std::string& out);

}  // namespace mirt::utility
