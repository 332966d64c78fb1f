#include <cwchar>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using DigestMembers = UtilityMembers;
ON_BOTH_OBJECTS(DigestMembers);

// RFC 1321, appendix A.5.
TEST_P(DigestMembers, MD5KnowsTheVectorsOfTheRfc) {
  const struct {
    const wchar_t* text;
    const wchar_t* digest;
  } rows[] = {
      {L"", L"d41d8cd98f00b204e9800998ecf8427e"},
      {L"a", L"0cc175b9c0f1b6a831c399e269772661"},
      {L"abc", L"900150983cd24fb0d6963f7d28e17f72"},
      {L"message digest", L"f96b697d7cb7938d525a2f31aaf161d0"},
      {L"abcdefghijklmnopqrstuvwxyz", L"c3fcd3d76192e4007dfb496cca67e13b"},
      {L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", L"d174ab98d277d9f5a5611c2c9f419d9f"},
      {L"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       L"57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.digest, text(L"MD5", row.text, 0));
}

// FIPS 180-2, appendix A, and its null message.
TEST_P(DigestMembers, SHA1KnowsTheVectorsOfTheStandard) {
  EXPECT_EQ(L"a9993e364706816aba3e25717850c26c9cd0d89d", text(L"SHA1", L"abc", 0));
  EXPECT_EQ(L"84983e441c3bd26ebaae4aa1f95129e5e54670f1",
            text(L"SHA1", L"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", 0));
  EXPECT_EQ(L"34aa973cd4c4daa4f61eeb2bdbad27316534016f", text(L"SHA1", std::wstring(1'000'000, L'a'), 0));
  EXPECT_EQ(L"da39a3ee5e6b4b0d3255bfef95601890afd80709", text(L"SHA1", L"", 0));
}

TEST_P(DigestMembers, CharsetChoosesTheBytes) {
  // printf '\303\274' | md5sum
  for (const int charset : {0, 1, 65001})
    EXPECT_EQ(L"c03410a5204b21cd8229ff754688d743", text(L"MD5", L"\u00FC", charset));
  for (const int charset : {-1, -2, -99}) {
    EXPECT_EQ(text(L"MD5", std::vector<std::uint8_t>{'a', 0, 0, 0}, 0), text(L"MD5", L"a", charset));
    EXPECT_EQ(text(L"SHA1", std::vector<std::uint8_t>{'a', 0, 0, 0}, 0), text(L"SHA1", L"a", charset));
    EXPECT_EQ(L"0cc175b9c0f1b6a831c399e269772661", text(L"MD5", std::vector<std::uint8_t>{'a'}, charset));
  }
  EXPECT_NE(text(L"MD5", L"a", 0), text(L"MD5", L"a", -1));
}

TEST_P(DigestMembers, ArraysOfNoBytesAreTheEmptyMessage) {
  EXPECT_EQ(L"d41d8cd98f00b204e9800998ecf8427e", text(L"MD5", std::vector<std::uint8_t>{}, 0));
  EXPECT_EQ(L"", text(L"Base64Encode", std::vector<std::uint8_t>{}, 0));
}

}  // namespace
}  // namespace test
