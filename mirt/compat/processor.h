// Instructions that not every processor has: chosen when the component runs, beside code that does without.
#pragma once

#if defined(__x86_64__)
#define MIRT_X86 1
#include <immintrin.h>
// Of a function that uses them; it is called after the question below only.
#define MIRT_WITH_AVX2 __attribute__((target("avx2")))
#define MIRT_WITH_SHA __attribute__((target("sha,ssse3,sse4.1")))

namespace kor_compat {

// Whether this processor, and the system for it, has them. Asked once each.
bool has_avx2() noexcept;
bool has_sha() noexcept;

}  // namespace kor_compat
#endif
