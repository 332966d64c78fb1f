// Identifiers: made at random, written and read.
#include <sys/random.h>

#include <cerrno>

#include <korlib/activation.h>

#include "base/ascii.h"

namespace {

constexpr int kTextLength = 38;
constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
// The places of the bytes in the text, the first three fields being written most significant byte first.
constexpr int kOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

bool has_dash_before(int byte) { return byte == 4 || byte == 6 || byte == 8 || byte == 10; }

// Stops at the first character that does not belong, a NUL included, so it never reads beyond the text.
bool read_guid(const OLECHAR* at, unsigned char* bytes) {
  if (*at++ != L'{') return false;
  for (int i = 0; i < 16; ++i) {
    if (has_dash_before(i) && *at++ != L'-') return false;
    const int high = base::hex_value(*at);
    if (high < 0) return false;
    const int low = base::hex_value(at[1]);
    if (low < 0) return false;
    bytes[kOrder[i]] = static_cast<unsigned char>(high << 4 | low);
    at += 2;
  }
  return at[0] == L'}' && at[1] == L'\0';
}

}  // namespace

HRESULT CoCreateGuid(GUID* guid) {
  if (!guid) return E_POINTER;
  *guid = GUID_NULL;
  GUID fresh;
  ssize_t got = 0;
  do {
    got = getrandom(&fresh, sizeof fresh, 0);
  } while (got < 0 && errno == EINTR);
  if (got != static_cast<ssize_t>(sizeof fresh)) return E_FAIL;
  fresh.Data3 = static_cast<std::uint16_t>((fresh.Data3 & 0x0FFF) | 0x4000);   // version 4
  fresh.Data4[0] = static_cast<std::uint8_t>((fresh.Data4[0] & 0x3F) | 0x80);  // variant of RFC 4122
  *guid = fresh;
  return S_OK;
}

INT StringFromGUID2(REFGUID guid, OLECHAR* out, INT capacity) {
  if (!out || capacity <= kTextLength) return 0;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&guid);
  OLECHAR* at = out;
  *at++ = L'{';
  for (int i = 0; i < 16; ++i) {
    if (has_dash_before(i)) *at++ = L'-';
    const unsigned char byte = bytes[kOrder[i]];
    *at++ = kDigits[byte >> 4];
    *at++ = kDigits[byte & 15];
  }
  *at++ = L'}';
  *at = L'\0';
  return kTextLength + 1;
}

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = CLSID_NULL;
  CLSID read;
  if (!text || !read_guid(text, reinterpret_cast<unsigned char*>(&read))) return CO_E_CLASSSTRING;
  *clsid = read;
  return S_OK;
}
