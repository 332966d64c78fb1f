// Exceptions stop at the typed interfaces.
#pragma once

#include <korlib_host/errors.h>

#include <string_view>

namespace zelto {

// Runs the body of an interface member: what it throws becomes a code, with the exception's text as the
// error's description.
template <class Body>
HRESULT guarded(std::wstring_view source, Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return korlib::hresult_from_exception(source);
  }
}

}  // namespace zelto
