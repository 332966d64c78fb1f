// The host's own CryptoAPI functions.
#include <korlib/wincrypt.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

#include "mirt/hosts/own_functions.h"

namespace test {

RecordedCrypt crypt;

namespace {

constexpr wchar_t kText[] = L"own";
constexpr BYTE kBytes[] = {'o', 'k'};

BOOL recorded(const wchar_t* format, unsigned int first = 0, unsigned int second = 0) {
  wchar_t call[64];
  std::swprintf(call, std::size(call), format, first, second);
  crypt.calls.emplace_back(call);
  return static_cast<int>(crypt.calls.size()) == crypt.failing_call ? FALSE : TRUE;
}

// Handles are the algorithm's number, a provider's being 1. None is given when the call fails.
BOOL open(BOOL succeeded, ALG_ID number, void** handle) {
  *handle = succeeded ? new ALG_ID(number) : nullptr;
  if (succeeded) ++crypt.open_handles;
  return succeeded;
}

BOOL close(void* handle) {
  delete static_cast<ALG_ID*>(handle);
  --crypt.open_handles;
  return TRUE;
}

// The characters, or bytes, of a fixed answer, into a buffer that the caller says is large enough.
template <class Unit>
BOOL give(const Unit* answer, DWORD count, Unit* out, DWORD* size) {
  const bool fits = !out || *size >= count;
  if (out && fits) std::copy_n(answer, count, out);
  *size = count;
  return fits ? TRUE : FALSE;
}

}  // namespace
}  // namespace test

using test::recorded;

BOOL CryptAcquireContextW(HCRYPTPROV* provider, const wchar_t* container, const wchar_t* name, DWORD type,
                          DWORD flags) {
  return test::open(recorded(container || name ? L"acquire a named one" : L"acquire %u %x", type, flags), 1, provider);
}

BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags) {
  recorded(L"release %u", flags);
  return test::close(provider);
}

BOOL CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, void* key, DWORD flags, HCRYPTHASH* hash) {
  return test::open(recorded(provider && !key ? L"create %x %u" : L"create wrongly", algorithm, flags), algorithm,
                    hash);
}

BOOL CryptHashData(HCRYPTHASH, const BYTE* data, DWORD bytes, DWORD) {
  return recorded(L"data of %u from %02x", bytes, bytes ? data[0] : 0);
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* buffer, DWORD* size, DWORD) {
  if (!recorded(L"digest %u into %u", parameter, *size)) return FALSE;
  const bool is_md5 = *static_cast<ALG_ID*>(hash) == CALG_MD5;
  BYTE digest[20];
  for (std::size_t i = 0; i < sizeof digest; ++i) digest[i] = static_cast<BYTE>(is_md5 ? i : 0xff - i);
  return test::give(digest, (is_md5 ? 16 : 20) - test::crypt.missing_bytes, buffer, size);
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  recorded(L"destroy");
  return test::close(hash);
}

BOOL CryptBinaryToStringW(const BYTE*, DWORD count, DWORD flags, wchar_t* text, DWORD* size) {
  if (!recorded(L"encode %u %x", count, flags)) return FALSE;
  return test::give(test::kText, static_cast<DWORD>(std::size(test::kText)), text, size);
}

BOOL CryptStringToBinaryW(const wchar_t*, DWORD length, DWORD flags, BYTE* bytes, DWORD* size, DWORD*, DWORD*) {
  if (!recorded(L"decode %u %x", length, flags)) return FALSE;
  return test::give(test::kBytes, static_cast<DWORD>(std::size(test::kBytes)), bytes, size);
}
