#include "compat/sha1_rounds.h"

#ifdef MIRT_X86

#include <utility>

namespace kor_compat {

namespace {

// What goes from one group of four rounds to the next: a to d, highest first, and a to d one group earlier, whose a
// becomes this one's e. `words` are the last sixteen of the message's schedule, four in each.
struct Rounds {
  __m128i abcd;
  __m128i earlier;
  __m128i words[4];
};

template <std::size_t Group>
[[gnu::always_inline]] MIRT_WITH_SHA inline void four_rounds(Rounds& r) {
  __m128i& word = r.words[Group % 4];
  if constexpr (Group >= 4) {
    const __m128i sum = _mm_xor_si128(_mm_sha1msg1_epu32(word, r.words[(Group + 1) % 4]), r.words[(Group + 2) % 4]);
    word = _mm_sha1msg2_epu32(sum, r.words[(Group + 3) % 4]);
  }
  const __m128i with_e = Group == 0 ? _mm_add_epi32(r.earlier, word) : _mm_sha1nexte_epu32(r.earlier, word);
  r.earlier = r.abcd;
  r.abcd = _mm_sha1rnds4_epu32(r.abcd, with_e, Group / 5);
}

template <std::size_t... Group>
[[gnu::always_inline]] MIRT_WITH_SHA inline void all_rounds(Rounds& r, std::index_sequence<Group...>) {
  (four_rounds<Group>(r), ...);
}

}  // namespace

MIRT_WITH_SHA void sha1_rounds(std::array<std::uint32_t, 5>& state, const unsigned char* data, std::size_t blocks) {
  constexpr int kReversed = 0b00'01'10'11;
  const __m128i big_endian = _mm_set_epi64x(0x0001020304050607, 0x08090a0b0c0d0e0f);
  auto* const first = reinterpret_cast<__m128i*>(state.data());
  __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(first), kReversed);
  __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
  for (; blocks > 0; --blocks, data += 64) {
    Rounds r{abcd, e, {}};
    for (std::size_t i = 0; i < 4; ++i) {
      const auto* const at = reinterpret_cast<const __m128i*>(data) + i;
      r.words[i] = _mm_shuffle_epi8(_mm_loadu_si128(at), big_endian);
    }
    all_rounds(r, std::make_index_sequence<20>());
    e = _mm_sha1nexte_epu32(r.earlier, e);
    abcd = _mm_add_epi32(r.abcd, abcd);
  }
  _mm_storeu_si128(first, _mm_shuffle_epi32(abcd, kReversed));
  state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
}

}  // namespace kor_compat

#endif
