// How a failure reaches the script: in words, or as a bare code.
#pragma once

#include <korlib/hresult.h>

// Fills the calling thread's error object and answers `hr` unchanged, also when there is no memory for
// the error object, so that a member can end with `return RaiseError(E_FAIL, L"Mirt", text);`.
int RaiseError(int hr, const wchar_t* source, const wchar_t* description);

namespace mirt {

// Takes the words of a failure off the thread: for whoever goes on from it. A later failure that has no
// words of its own would show them.
void forget_error() noexcept;

// SUCCEEDED, for a call whose failure is gone on from.
inline bool succeeded_or_forgotten(HRESULT hr) noexcept {
  if (FAILED(hr)) forget_error();
  return SUCCEEDED(hr);
}

// The code of the exception being handled; to be called in a catch block only. Every interface member
// that runs code which may throw ends with `catch (...) { return mirt::hresult_from_exception(); }`.
HRESULT hresult_from_exception() noexcept;

}  // namespace mirt
