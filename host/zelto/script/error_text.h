// The thread's error object and the words for result codes.
#pragma once

#include <string>
#include <string_view>

#include <korlib/errorinfo.h>
#include <korlib/hresult.h>
#include <korlib/ptr.h>

namespace zelto::script {

// A wrapper was used after its page, on either side of the border.
inline constexpr HRESULT kDisconnected = korlib::hresult(0x80010108);

struct ErrorText {
  std::wstring source;
  std::wstring description;  // empty: the failing member said nothing
  CComPtr<IErrorInfo> info;  // the object that said it
};
// Moves the thread's error object out.
ErrorText take_error();
void clear_error() noexcept;

// "Type mismatch: 'name' (0x80020005)".
std::wstring describe(HRESULT hr, std::wstring_view member);
// The same with other words than the code's own.
std::wstring describe(HRESULT hr, std::wstring words, std::wstring_view member);

}  // namespace zelto::script
