// The CryptoAPI functions that the utility members call; see winapi.h for how a host may supply them.
// All answer TRUE (1) or FALSE (0).
#pragma once

#include <korlib/types.h>

using HCRYPTPROV = void*;
using HCRYPTHASH = void*;
using ALG_ID = unsigned int;

inline constexpr DWORD PROV_RSA_FULL = 1;
inline constexpr DWORD CRYPT_VERIFYCONTEXT = 0xF0000000u;
inline constexpr DWORD CRYPT_MACHINE_KEYSET = 0x20;
inline constexpr ALG_ID CALG_MD5 = 0x8003;
inline constexpr ALG_ID CALG_SHA1 = 0x8004;
inline constexpr DWORD HP_HASHVAL = 2;
inline constexpr DWORD CRYPT_STRING_BASE64 = 1;
inline constexpr DWORD CRYPT_STRING_NOCRLF = 0x40000000u;

extern "C" {
KORLIB_API BOOL CryptAcquireContextW(HCRYPTPROV* provider, const wchar_t* container, const wchar_t* name, DWORD type,
                                     DWORD flags);
KORLIB_API BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags);
KORLIB_API BOOL CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, void* key, DWORD flags, HCRYPTHASH* hash);
KORLIB_API BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD bytes, DWORD flags);
KORLIB_API BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* buffer, DWORD* size, DWORD flags);
KORLIB_API BOOL CryptDestroyHash(HCRYPTHASH hash);
KORLIB_API BOOL CryptBinaryToStringW(const BYTE* bytes, DWORD count, DWORD flags, wchar_t* text, DWORD* size);
KORLIB_API BOOL CryptStringToBinaryW(const wchar_t* text, DWORD length, DWORD flags, BYTE* bytes, DWORD* size,
                                     DWORD* skip, DWORD* used_flags);
}
