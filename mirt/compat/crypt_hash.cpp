// Digests through the CryptoAPI names: providers, hashes and what is read from them.
//
// A host replaces all six or none: handles go from one to the other. It owes MD5 and SHA-1, and a digest
// that can be read more than once, with more data between.
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <korlib/wincrypt.h>

#include "compat/digest.h"
#include "compat/weak.h"

namespace kor_compat {

// Behind a hash handle. Everything hashed is kept, and the digest computed when it is asked for.
struct CryptHashState {
  ALG_ID algorithm;
  std::vector<unsigned char> bytes;
};

}  // namespace kor_compat

namespace {

using kor_compat::CryptHashState;

CryptHashState* state_of(HCRYPTHASH hash) { return static_cast<CryptHashState*>(hash); }

// Copies a digest out by the size protocol: see CryptGetHashParam.
template <std::size_t Length>
BOOL give(const std::array<unsigned char, Length>& digest, BYTE* buffer, DWORD* size) {
  std::memcpy(buffer, digest.data(), Length);
  *size = Length;
  return TRUE;
}

}  // namespace

// The provider says nothing; a one-byte object stands for it.
MIRT_WEAK BOOL CryptAcquireContextW(HCRYPTPROV* provider, const wchar_t*, const wchar_t*, DWORD, DWORD) {
  if (!provider) return TRUE;
  *provider = new (std::nothrow) char();
  return *provider ? TRUE : FALSE;
}

MIRT_WEAK BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD) {
  delete static_cast<char*>(provider);
  return TRUE;
}

MIRT_WEAK BOOL CryptCreateHash(HCRYPTPROV, ALG_ID algorithm, void*, DWORD, HCRYPTHASH* hash) {
  if (!hash) return FALSE;
  *hash = nullptr;
  if (algorithm != CALG_MD5 && algorithm != CALG_SHA1) return FALSE;
  *hash = new (std::nothrow) CryptHashState{algorithm, {}};
  return *hash ? TRUE : FALSE;
}

MIRT_WEAK BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD bytes, DWORD) try {
  if (!hash || (!data && bytes)) return FALSE;
  if (bytes) state_of(hash)->bytes.insert(state_of(hash)->bytes.end(), data, data + bytes);
  return TRUE;
} catch (...) {
  return FALSE;
}

// With a buffer that is large enough, the digest of all bytes so far. Without one, TRUE and its length;
// with one that is too small, FALSE and its length.
MIRT_WEAK BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* buffer, DWORD* size, DWORD) try {
  if (parameter != HP_HASHVAL || !hash || !size) return FALSE;
  const CryptHashState& state = *state_of(hash);
  const DWORD length = state.algorithm == CALG_MD5 ? 16 : 20;
  if (!buffer || *size < length) {
    *size = length;
    return buffer ? FALSE : TRUE;
  }
  return state.algorithm == CALG_MD5
             ? give(kor_compat::md5_digest(state.bytes.data(), state.bytes.size()), buffer, size)
             : give(kor_compat::sha1_digest(state.bytes.data(), state.bytes.size()), buffer, size);
} catch (...) {
  return FALSE;
}

MIRT_WEAK BOOL CryptDestroyHash(HCRYPTHASH hash) {
  delete state_of(hash);
  return TRUE;
}
