// The digests' parts, and the lengths around which their padding changes.
#include "compat/digest.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace test {
namespace {

using kor_compat::append_be64;
using kor_compat::append_le64;
using kor_compat::rotl32;
using Bytes = std::vector<unsigned char>;

template <std::size_t Size>
std::string hexadecimal(const std::array<unsigned char, Size>& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

TEST(Digest, RotatesToTheLeft) {
  EXPECT_EQ(0x34567812u, rotl32(0x12345678u, 8));
  EXPECT_EQ(3u, rotl32(0x80000001u, 1));
  EXPECT_EQ(0xC0000000u, rotl32(0x80000001u, 31));
  for (const unsigned int whole_turn : {0u, 32u}) EXPECT_EQ(0x12345678u, rotl32(0x12345678u, whole_turn));
}

TEST(Digest, AppendsLengthsInEitherOrder) {
  Bytes little = {0xAA};
  append_le64(little, 0x0102030405060708u);
  EXPECT_EQ((Bytes{0xAA, 8, 7, 6, 5, 4, 3, 2, 1}), little);
  Bytes big = {0xAA};
  append_be64(big, 0x0102030405060708u);
  EXPECT_EQ((Bytes{0xAA, 1, 2, 3, 4, 5, 6, 7, 8}), big);
}

// Computed by md5sum and sha1sum of as many letters "a". With 56 the length no longer fits in the block.
TEST(Digest, PadsWhateverTheLength) {
  const struct {
    std::size_t length;
    const char* md5;
    const char* sha1;
  } rows[] = {
      {55, "ef1772b6dff9a122358552954ad0df65", "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
      {56, "3b0c8ac703f828b04c6c197006d17218", "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
      {63, "b06521f39153d618550606be297466d5", "03f09f5b158a7a8cdad920bddc29b81c18a551f5"},
      {64, "014842d480b571495a4a0363793f7367", "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
      {65, "c743a45e0d2e6a95cb859adae0248435", "11655326c708d70319be2610e8a57d9a5b959d3b"},
      {119, "8a7bd0732ed6a28ce75f6dabc90e1613", "ee971065aaa017e0632a8ca6c77bb3bf8b1dfc56"},
      {120, "5f61c0ccad4cac44c75ff505e1f1e537", "f34c1488385346a55709ba056ddd08280dd4c6d6"},
      {128, "e510683b3f5ffe4093d021808bc6ff70", "ad5b3fdbcb526778c2839d2f151ea753995e26a0"},
  };
  for (const auto& row : rows) {
    const Bytes letters(row.length, 'a');
    EXPECT_EQ(row.md5, hexadecimal(kor_compat::md5_digest(letters.data(), letters.size()))) << row.length;
    EXPECT_EQ(row.sha1, hexadecimal(kor_compat::sha1_digest(letters.data(), letters.size()))) << row.length;
  }
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", hexadecimal(kor_compat::md5_digest(nullptr, 0)));
  EXPECT_EQ("da39a3ee5e6b4b0d3255bfef95601890afd80709", hexadecimal(kor_compat::sha1_digest(nullptr, 0)));
}

// Where a processor has instructions for SHA-1, they are what is compared here.
TEST(Digest, IsTheSameWithAndWithoutTheProcessorsHelp) {
  Bytes bytes;
  for (unsigned int i = 0; i < 300; ++i) {
    EXPECT_EQ(hexadecimal(kor_compat::sha1_digest_plainly(bytes.data(), bytes.size())),
              hexadecimal(kor_compat::sha1_digest(bytes.data(), bytes.size())))
        << i;
    bytes.push_back(static_cast<unsigned char>(i * 131 + 7));
  }
}

}  // namespace
}  // namespace test
