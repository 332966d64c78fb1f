// Between values and bytes, as the `charset` arguments of the utility members choose (mirt/mirt.h).
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <korlib/comvariant.h>

namespace mirt::utility {

// The bytes that an encoder or a digest works on. Refers to the input, which must outlive it, unless the
// text had to be converted.
class InputBytes {
 public:
  // E_INVALIDARG for what is neither a string nor a byte array, E_FAIL for a byte array that is none.
  HRESULT take(const VARIANT* input, LONG charset);

  const char* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  HRESULT take_text(BSTR text, LONG charset);
  HRESULT take_array(const SAFEARRAY* array);

  const char* data_ = "";
  std::size_t size_ = 0;
  char short_[1024];  // the UTF-8 form of a short text
  std::unique_ptr<char[]> long_;
};

// The form in which a decoder hands bytes out: a string, or for -2 a byte array.
HRESULT give_decoded(const char* bytes, std::size_t size, LONG charset, VARIANT* decoded);

// A new string for an out-parameter, of `length` characters that the caller fills; E_OUTOFMEMORY also
// when no string can be that long.
HRESULT new_text(std::size_t length, BSTR* text);

}  // namespace mirt::utility
