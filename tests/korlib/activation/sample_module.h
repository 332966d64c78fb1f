// What the sample module and the tests that open it agree on.
#pragma once

#include <korlib/activation.h>

namespace sample {

inline constexpr CLSID kFirst = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E01");
inline constexpr CLSID kSecond = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E02");
// Fails with E_ABORT and leaves the new object with the caller, as a class that cannot bind it does.
inline constexpr CLSID kUnbound = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E03");

// Tells which class an object is of.
struct ISample : IUnknown {
  virtual HRESULT Number(LONG* number) = 0;

 protected:
  ~ISample() = default;
};

}  // namespace sample
KORLIB_IID(sample::ISample, "9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E00");

// The test program's; the module calls it with "attach", "detach", "register" and "unregister".
extern "C" KORLIB_API void sample_step(const char* step);
