#include "compat/processor.h"

#ifdef MIRT_X86

#include <cpuid.h>

namespace kor_compat {

namespace {

// The compiler's own question does not know these in all versions.
bool ask_for_sha() noexcept {
  constexpr unsigned int kSsse3 = 1u << 9;
  constexpr unsigned int kSse41 = 1u << 19;
  constexpr unsigned int kSha = 1u << 29;
  unsigned int a = 0;
  unsigned int b = 0;
  unsigned int c = 0;
  unsigned int d = 0;
  if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & kSsse3) || !(c & kSse41)) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & kSha);
}

}  // namespace

bool has_avx2() noexcept {
  static const bool has = __builtin_cpu_supports("avx2") != 0;
  return has;
}

bool has_sha() noexcept {
  static const bool has = ask_for_sha();
  return has;
}

}  // namespace kor_compat

#endif
