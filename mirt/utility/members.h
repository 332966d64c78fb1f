// The utility members' behaviour, free of the object that carries them.
//
// All are safe to call with null strings, which read as empty. Out-parameters are null or VT_EMPTY after
// a failure, except where find_string says otherwise.
#pragma once

#include <korlib/variant.h>

namespace mirt::utility {

HRESULT make_key(LONG length, BSTR alphabet, BSTR* key) noexcept;
HRESULT make_guid(VARIANT_BOOL bare, BSTR* guid) noexcept;
HRESULT sleep(LONG milliseconds) noexcept;
HRESULT md5(const VARIANT* input, LONG charset, BSTR* hex) noexcept;
HRESULT sha1(const VARIANT* input, LONG charset, BSTR* hex) noexcept;
// When a value has no text form its conversion's code is answered; *found then tells what was found
// before it. When an argument cannot be taken at all, *found is untouched.
HRESULT find_string(const VARIANT* list, const VARIANT* wanted, VARIANT_BOOL* found) noexcept;
HRESULT han_to_zen(BSTR text, BSTR* wide) noexcept;
HRESULT zen_to_han(BSTR text, BSTR* narrow) noexcept;
HRESULT submit_decode(BSTR text, BSTR* decoded) noexcept;
HRESULT trim(BSTR text, BSTR* trimmed) noexcept;
HRESULT html_encode(BSTR text, BSTR* encoded) noexcept;
HRESULT base64_encode(const VARIANT* input, LONG charset, BSTR* encoded) noexcept;
HRESULT url_encode(const VARIANT* input, LONG charset, BSTR* encoded) noexcept;
HRESULT base64_decode(BSTR text, LONG charset, VARIANT* decoded) noexcept;
HRESULT url_decode(BSTR text, LONG charset, VARIANT* decoded) noexcept;

}  // namespace mirt::utility
