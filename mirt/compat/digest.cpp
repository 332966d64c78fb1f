#include "compat/digest.h"

#include <bit>
#include <cstring>
#include <utility>

#include "compat/sha1_rounds.h"

namespace kor_compat {

namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kLengthField = 8;

template <std::size_t Words>
using State = std::array<std::uint32_t, Words>;

template <std::endian Order>
std::uint32_t load32(const unsigned char* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
  return Order == std::endian::native ? word : __builtin_bswap32(word);
}

template <std::endian Order>
void store32(unsigned char* bytes, std::uint32_t word) {
  if (Order != std::endian::native) word = __builtin_bswap32(word);
  std::memcpy(bytes, &word, sizeof word);
}

// Shifts of each round of MD5; its steps use them in turn.
constexpr std::array<std::array<unsigned int, 4>, 4> kMd5Shift = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

// floor(2^32 * |sin(i + 1)|), i in radians.
constexpr std::array<std::uint32_t, 64> kMd5Sine = {
    0xd76aa478u, 0xe8c7b756u, 0x242070dbu, 0xc1bdceeeu, 0xf57c0fafu, 0x4787c62au, 0xa8304613u, 0xfd469501u,
    0x698098d8u, 0x8b44f7afu, 0xffff5bb1u, 0x895cd7beu, 0x6b901122u, 0xfd987193u, 0xa679438eu, 0x49b40821u,
    0xf61e2562u, 0xc040b340u, 0x265e5a51u, 0xe9b6c7aau, 0xd62f105du, 0x02441453u, 0xd8a1e681u, 0xe7d3fbc8u,
    0x21e1cde6u, 0xc33707d6u, 0xf4d50d87u, 0x455a14edu, 0xa9e3e905u, 0xfcefa3f8u, 0x676f02d9u, 0x8d2a4c8au,
    0xfffa3942u, 0x8771f681u, 0x6d9d6122u, 0xfde5380cu, 0xa4beea44u, 0x4bdecfa9u, 0xf6bb4b60u, 0xbebfbc70u,
    0x289b7ec6u, 0xeaa127fau, 0xd4ef3085u, 0x04881d05u, 0xd9d4d039u, 0xe6db99e5u, 0x1fa27cf8u, 0xc4ac5665u,
    0xf4292244u, 0x432aff97u, 0xab9423a7u, 0xfc93a039u, 0x655b59c3u, 0x8f0ccc92u, 0xffeff47du, 0x85845dd1u,
    0x6fa87e4fu, 0xfe2ce6e0u, 0xa3014314u, 0x4e0811a1u, 0xf7537e82u, 0xbd3af235u, 0x2ad7d2bbu, 0xeb86d391u,
};

// One step, its number known to the compiler: the registers' roles turn by one a step, so that nothing
// is moved between them.
template <std::size_t I>
inline void md5_step(State<4>& s, const std::uint32_t (&m)[16]) {
  std::uint32_t& a = s[(64 - I) % 4];
  const std::uint32_t b = s[(65 - I) % 4];
  const std::uint32_t c = s[(66 - I) % 4];
  const std::uint32_t d = s[(67 - I) % 4];
  constexpr std::size_t round = I / 16;
  constexpr std::size_t word = (round == 0 ? I : round == 1 ? 5 * I + 1 : round == 2 ? 3 * I + 5 : 7 * I) % 16;
  a += kMd5Sine[I] + m[word];
  if constexpr (round == 0) {
    a += d ^ (b & (c ^ d));
  } else if constexpr (round == 1) {
    a += (b & d) + (c & ~d);
  } else if constexpr (round == 2) {
    a += b ^ c ^ d;
  } else {
    a += c ^ (b | ~d);
  }
  a = rotl32(a, kMd5Shift[round][I % 4]) + b;
}

template <std::size_t... I>
inline void md5_steps(State<4>& s, const std::uint32_t (&m)[16], std::index_sequence<I...>) {
  (md5_step<I>(s, m), ...);
}

void md5_block(State<4>& state, const unsigned char* block) {
  std::uint32_t m[16];
  for (std::size_t i = 0; i < 16; ++i) m[i] = load32<std::endian::little>(block + 4 * i);
  State<4> s = state;
  md5_steps(s, m, std::make_index_sequence<64>());
  for (std::size_t i = 0; i < 4; ++i) state[i] += s[i];
}

template <std::size_t I>
inline void sha1_step(State<5>& s, std::uint32_t (&w)[16]) {
  constexpr std::size_t round = I / 20;
  constexpr std::uint32_t kConstant[4] = {0x5a827999u, 0x6ed9eba1u, 0x8f1bbcdcu, 0xca62c1d6u};
  if constexpr (I >= 16) w[I % 16] = rotl32(w[(I + 13) % 16] ^ w[(I + 8) % 16] ^ w[(I + 2) % 16] ^ w[I % 16], 1);
  const std::uint32_t a = s[(80 - I) % 5];
  std::uint32_t& b = s[(81 - I) % 5];
  const std::uint32_t c = s[(82 - I) % 5];
  const std::uint32_t d = s[(83 - I) % 5];
  std::uint32_t& e = s[(84 - I) % 5];
  e += rotl32(a, 5) + kConstant[round] + w[I % 16];
  if constexpr (round == 0) {
    e += d ^ (b & (c ^ d));
  } else if constexpr (round == 2) {
    e += (b & c) + (d & (b ^ c));
  } else {
    e += b ^ c ^ d;
  }
  b = rotl32(b, 30);
}

template <std::size_t... I>
inline void sha1_steps(State<5>& s, std::uint32_t (&w)[16], std::index_sequence<I...>) {
  (sha1_step<I>(s, w), ...);
}

void sha1_block(State<5>& state, const unsigned char* block) {
  std::uint32_t w[16];
  for (std::size_t i = 0; i < 16; ++i) w[i] = load32<std::endian::big>(block + 4 * i);
  State<5> s = state;
  sha1_steps(s, w, std::make_index_sequence<80>());
  for (std::size_t i = 0; i < 5; ++i) state[i] += s[i];
}

template <std::size_t Words>
using Compress = void (*)(State<Words>& state, const unsigned char* data, std::size_t blocks);

template <std::size_t Words, void (*block)(State<Words>&, const unsigned char*)>
void each_block(State<Words>& state, const unsigned char* data, std::size_t blocks) {
  for (; blocks > 0; --blocks, data += kBlock) block(state, data);
}

Compress<5> sha1_compress() {
#ifdef MIRT_X86
  if (has_sha()) return sha1_rounds;
#endif
  return each_block<5, sha1_block>;
}

// Whole blocks where they lie, then the rest with its padding: a one bit, zeros, the length in bits.
template <std::endian Order, std::size_t Words>
std::array<unsigned char, Words * 4> digest(State<Words> state, Compress<Words> compress, const unsigned char* data,
                                            std::size_t n) {
  const std::size_t whole = n / kBlock * kBlock;
  compress(state, data, whole / kBlock);

  std::vector<unsigned char> tail;
  tail.reserve(2 * kBlock);
  if (n > whole) tail.assign(data + whole, data + n);
  tail.push_back(0x80);
  while (tail.size() % kBlock != kBlock - kLengthField) tail.push_back(0);
  const std::uint64_t bits = std::uint64_t{n} * 8;
  Order == std::endian::little ? append_le64(tail, bits) : append_be64(tail, bits);
  compress(state, tail.data(), tail.size() / kBlock);

  std::array<unsigned char, Words * 4> bytes;
  for (std::size_t i = 0; i < Words; ++i) store32<Order>(bytes.data() + 4 * i, state[i]);
  return bytes;
}

std::array<unsigned char, 20> sha1_with(Compress<5> compress, const unsigned char* data, std::size_t n) {
  const State<5> start = {0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u, 0xc3d2e1f0u};
  return digest<std::endian::big, 5>(start, compress, data, n);
}

}  // namespace

void append_le64(std::vector<unsigned char>& bytes, std::uint64_t value) {
  for (unsigned int shift = 0; shift < 64; shift += 8) bytes.push_back(static_cast<unsigned char>(value >> shift));
}

void append_be64(std::vector<unsigned char>& bytes, std::uint64_t value) {
  for (unsigned int shift = 64; shift > 0; shift -= 8)
    bytes.push_back(static_cast<unsigned char>(value >> (shift - 8)));
}

std::array<unsigned char, 16> md5_digest(const unsigned char* data, std::size_t n) {
  const State<4> start = {0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u};
  return digest<std::endian::little, 4>(start, each_block<4, md5_block>, data, n);
}

std::array<unsigned char, 20> sha1_digest(const unsigned char* data, std::size_t n) {
  static const Compress<5> compress = sha1_compress();
  return sha1_with(compress, data, n);
}

std::array<unsigned char, 20> sha1_digest_plainly(const unsigned char* data, std::size_t n) {
  return sha1_with(each_block<5, sha1_block>, data, n);
}

}  // namespace kor_compat
