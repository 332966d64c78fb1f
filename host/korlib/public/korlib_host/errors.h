// Failing with words: the thread's error object, filled in one call.
#pragma once

#include <string_view>

#include <korlib/errorinfo.h>

namespace korlib {

// Makes `text` the description of the calling thread's error object and answers `hr` unchanged:
//   return raise(E_INVALIDARG, L"ADODB.Stream", L"Position: beyond the end");
KORLIB_API HRESULT raise(HRESULT hr, std::wstring_view source, std::wstring_view text);

// The code of the exception being handled; the text of a std::exception becomes the error's description.
// Called in a catch block only.
KORLIB_API HRESULT hresult_from_exception(std::wstring_view source);

}  // namespace korlib
