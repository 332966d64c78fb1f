// MD5, SHA1.
#include <array>

#include <korlib/wincrypt.h>

#include "frame/error.h"
#include "utility/bytes.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

class Provider {
 public:
  Provider() {
    if (!CryptAcquireContextW(&handle_, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT | CRYPT_MACHINE_KEYSET)) {
      handle_ = nullptr;
    }
  }
  ~Provider() {
    if (handle_) CryptReleaseContext(handle_, 0);
  }
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;
  HCRYPTPROV get() const { return handle_; }

 private:
  HCRYPTPROV handle_ = nullptr;
};

class Hash {
 public:
  Hash(HCRYPTPROV provider, ALG_ID algorithm) {
    if (!CryptCreateHash(provider, algorithm, nullptr, 0, &handle_)) handle_ = nullptr;
  }
  ~Hash() {
    if (handle_) CryptDestroyHash(handle_);
  }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;
  HCRYPTHASH get() const { return handle_; }

 private:
  HCRYPTHASH handle_ = nullptr;
};

// Two lower-case digits a byte.
HRESULT give_hexadecimal(const BYTE* bytes, std::size_t count, BSTR* out) {
  constexpr char kDigits[] = "0123456789abcdef";
  RETURN_IF_FAILED(new_text(2 * count, out));
  for (std::size_t i = 0; i < count; ++i) {
    (*out)[2 * i] = kDigits[bytes[i] >> 4];
    (*out)[2 * i + 1] = kDigits[bytes[i] & 15];
  }
  return S_OK;
}

template <ALG_ID Algorithm, DWORD Length>
HRESULT digest(const unsigned char* bytes, const unsigned int& n, BSTR* out) {
  const Provider provider;
  if (!provider.get()) return E_FAIL;
  const Hash hash(provider.get(), Algorithm);
  if (!hash.get() || !CryptHashData(hash.get(), bytes, n, 0)) return E_FAIL;
  std::array<BYTE, Length> value{};
  DWORD size = Length;
  if (!CryptGetHashParam(hash.get(), HP_HASHVAL, value.data(), &size, 0) || size != Length) return E_FAIL;
  return give_hexadecimal(value.data(), value.size(), out);
}

HRESULT MD5(const unsigned char* bytes, const unsigned int& n, BSTR* out) {
  return digest<CALG_MD5, 16>(bytes, n, out);
}

HRESULT SHA1(const unsigned char* bytes, const unsigned int& n, BSTR* out) {
  return digest<CALG_SHA1, 20>(bytes, n, out);
}

HRESULT digest_with(HRESULT (*worker)(const unsigned char*, const unsigned int&, BSTR*), const VARIANT* input,
                    LONG charset, BSTR* hex) {
  return guarded(hex, [&] {
    InputBytes bytes;
    RETURN_IF_FAILED(bytes.take(input, charset));
    if (bytes.size() > UINT32_MAX) return E_FAIL;
    return worker(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()), hex);
  });
}

}  // namespace

HRESULT md5(const VARIANT* input, LONG charset, BSTR* hex) noexcept { return digest_with(MD5, input, charset, hex); }
HRESULT sha1(const VARIANT* input, LONG charset, BSTR* hex) noexcept { return digest_with(SHA1, input, charset, hex); }

}  // namespace mirt::utility
