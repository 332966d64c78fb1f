// MD5 (RFC 1321) and SHA-1 (FIPS 180) of bytes in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kor_compat {

std::array<unsigned char, 16> md5_digest(const unsigned char* data, std::size_t n);
std::array<unsigned char, 20> sha1_digest(const unsigned char* data, std::size_t n);
// The same without the instructions that some processors have for it.
std::array<unsigned char, 20> sha1_digest_plainly(const unsigned char* data, std::size_t n);

constexpr unsigned int rotl32(unsigned int x, unsigned int n) { return x << (n & 31) | x >> (-n & 31); }

// Append a message length as the two digests end with it: MD5 its low byte first, SHA-1 its high byte.
void append_le64(std::vector<unsigned char>& bytes, std::uint64_t value);
void append_be64(std::vector<unsigned char>& bytes, std::uint64_t value);

}  // namespace kor_compat
