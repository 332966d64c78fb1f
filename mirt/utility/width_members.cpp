// HanToZen, ZenToHan: the host's width mapping.
#include <korlib/combstr.h>
#include <korlib/winapi.h>

#include "frame/error.h"
#include "utility/bytes.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

constexpr unsigned int kLocale = 0x110000;
constexpr unsigned int kToFullWidth = 0x80000000u;  // what hosts of this component know it by; not LCMAP_FULLWIDTH

// The mapping must answer the same size twice, and a fallback that only copies does not. Text that would
// become nothing is text that the host could not map.
HRESULT map_width(unsigned int flags, BSTR text, BSTR* mapped) {
  return guarded(mapped, [&] {
    const std::wstring_view source = korlib::view_of(text);
    const int length = static_cast<int>(source.size());
    const int needed = LCMapStringW(kLocale, flags, source.data(), length, nullptr, 0);
    if (needed < 0 || (needed == 0 && length != 0)) return E_FAIL;
    CComBSTR target;
    RETURN_IF_FAILED(new_text(static_cast<std::size_t>(needed), target.put()));
    if (LCMapStringW(kLocale, flags, source.data(), length, target.get(), needed) != needed) return E_FAIL;
    *mapped = target.detach();
    return S_OK;
  });
}

}  // namespace

HRESULT han_to_zen(BSTR text, BSTR* wide) noexcept { return map_width(kToFullWidth, text, wide); }
HRESULT zen_to_han(BSTR text, BSTR* narrow) noexcept { return map_width(LCMAP_HALFWIDTH, text, narrow); }

}  // namespace mirt::utility
