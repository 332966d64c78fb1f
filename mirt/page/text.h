// Small helpers over text that the page controller's files share.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include <korlib/combstr.h>

namespace page {

// The parts one after the other; null when memory is short.
CComBSTR join(std::initializer_list<std::wstring_view> parts);

// Raises E_FAIL with the text, as the controller's own errors are reported, and returns E_FAIL.
HRESULT raise(std::initializer_list<std::wstring_view> parts);

}  // namespace page
