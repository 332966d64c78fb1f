// The CryptoAPI functions that the utility members call; see winapi.h for how a host may supply them. All
// answer TRUE (1) or FALSE (0).
//
// Of the digests a host replaces all six functions or none, since handles go from one to the other. Of base64
// it may replace either.
#pragma once

#include <korlib/types.h>

// A source of algorithms, a digest in the making, and which digest it is. Handles belong to whoever asked for
// them, and to one thread at a time.
using HCRYPTPROV = void*;
using HCRYPTHASH = void*;
using ALG_ID = unsigned int;

// What a provider is asked for with: no keys and no container.
inline constexpr DWORD PROV_RSA_FULL = 1;
inline constexpr DWORD CRYPT_VERIFYCONTEXT = 0xF0000000u;
inline constexpr DWORD CRYPT_MACHINE_KEYSET = 0x20;
// MD5 (RFC 1321), of 16 bytes, and SHA-1 (FIPS 180), of 20.
inline constexpr ALG_ID CALG_MD5 = 0x8003;
inline constexpr ALG_ID CALG_SHA1 = 0x8004;
// The one thing to read from a digest: its value.
inline constexpr DWORD HP_HASHVAL = 2;
// Base64 (RFC 4648, section 4), on one line.
inline constexpr DWORD CRYPT_STRING_BASE64 = 1;
inline constexpr DWORD CRYPT_STRING_NOCRLF = 0x40000000u;

extern "C" {
// A provider, which the caller releases with the next function.
KORLIB_API BOOL CryptAcquireContextW(HCRYPTPROV* provider, const wchar_t* container, const wchar_t* name, DWORD type,
                                     DWORD flags);
KORLIB_API BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags);
// A digest of no bytes yet, which the caller destroys; FALSE and null for an algorithm that the host does not
// have. `key` is null.
KORLIB_API BOOL CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, void* key, DWORD flags, HCRYPTHASH* hash);
// Adds bytes.
KORLIB_API BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD bytes, DWORD flags);
// The digest of all bytes so far; more may be added after it. With a null buffer *size becomes the length and
// the answer is TRUE; with one that is too small, the length and FALSE.
KORLIB_API BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* buffer, DWORD* size, DWORD flags);
// Null is fine.
KORLIB_API BOOL CryptDestroyHash(HCRYPTHASH hash);
// Bytes to text. *size is the room in `text`, in characters with the NUL, and becomes what the text needs, the
// NUL included; a null `text` only asks for that. FALSE when it does not fit.
KORLIB_API BOOL CryptBinaryToStringW(const BYTE* bytes, DWORD count, DWORD flags, wchar_t* text, DWORD* size);
// Text to bytes. A length of 0 means up to the NUL. *size is the room in `bytes` and becomes their number; null
// `bytes` only ask for that. FALSE for text that is not base64, the empty one included; blanks and line ends
// are skipped. The last two arguments are not looked at.
KORLIB_API BOOL CryptStringToBinaryW(const wchar_t* text, DWORD length, DWORD flags, BYTE* bytes, DWORD* size,
                                     DWORD* skip, DWORD* used_flags);
}
