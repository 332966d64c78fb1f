#include "page/text.h"

#include <algorithm>

#include "frame/error.h"

namespace page {

CComBSTR join(std::initializer_list<std::wstring_view> parts) {
  std::size_t length = 0;
  for (const std::wstring_view part : parts) length += part.size();
  CComBSTR joined;
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return joined;
  joined.attach(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
  wchar_t* out = joined.get();
  if (!out) return joined;
  for (const std::wstring_view part : parts) out = std::copy(part.begin(), part.end(), out);
  return joined;
}

HRESULT raise(std::initializer_list<std::wstring_view> parts) {
  const CComBSTR text = join(parts);
  return RaiseError(E_FAIL, L"Mirt", text ? text.get() : L"");
}

}  // namespace page
