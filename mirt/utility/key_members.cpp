// MakeKey, MakeGUID, Sleep.
#include <boost/random/uniform_int.hpp>
#include <boost/random/variate_generator.hpp>
#include <cstdint>
#include <random>

#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/winapi.h>

#include "frame/error.h"
#include "utility/bytes.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

constexpr int kBracedLength = 38;
constexpr UINT kDigits = 32;

}  // namespace

HRESULT make_key(LONG length, BSTR alphabet, BSTR* key) noexcept {
  return guarded(key, [&] {
    const UINT letters = SysStringLen(alphabet);
    if (length < 0 || letters == 0) return E_INVALIDARG;
    CComBSTR text;
    RETURN_IF_FAILED(new_text(static_cast<std::size_t>(length), text.put()));
    std::mt19937 engine(static_cast<std::uint32_t>(GetTickCount()));
    boost::variate_generator<std::mt19937&, boost::uniform_int<int>> draw(
        engine, boost::uniform_int<int>(0, static_cast<int>(letters) - 1));
    for (LONG i = 0; i < length; ++i) text.get()[i] = alphabet[draw()];
    *key = text.detach();
    return S_OK;
  });
}

HRESULT make_guid(VARIANT_BOOL bare, BSTR* guid) noexcept {
  return guarded(guid, [&] {
    GUID made{};
    RETURN_IF_FAILED(CoCreateGuid(&made));
    wchar_t braced[kBracedLength + 1];
    if (StringFromGUID2(made, braced, kBracedLength + 1) == 0) return E_FAIL;
    if (bare != VARIANT_TRUE) {
      *guid = SysAllocString(braced);
      return *guid ? S_OK : E_OUTOFMEMORY;
    }
    wchar_t digits[kDigits];
    UINT copied = 0;
    int at = 1;
    for (; at < kBracedLength && copied < kDigits; ++at) {
      if (braced[at] == L'{' || braced[at] == L'-' || braced[at] == L'}') continue;
      digits[copied++] = braced[at];
    }
    // The last digit stands right before the closing brace, the 38th character.
    if (copied != kDigits || at != kBracedLength - 1) return E_FAIL;
    *guid = SysAllocStringLen(digits, kDigits);
    return *guid ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT sleep(LONG milliseconds) noexcept {
  ::Sleep(static_cast<unsigned int>(milliseconds));
  return S_OK;
}

}  // namespace mirt::utility
