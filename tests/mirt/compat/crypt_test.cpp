#include <cstring>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mirt/compat/fallbacks.h"

namespace test {
namespace {

class CryptFallbacks : public Fallbacks {
 protected:
  // Also sees that the two arguments after the size are left alone.
  BOOL decode(const wchar_t* text, DWORD length, BYTE* bytes, DWORD* size) {
    DWORD skip = 77;
    DWORD flags = 77;
    const BOOL done = FALLBACK(CryptStringToBinaryW)(text, length, CRYPT_STRING_BASE64, bytes, size, &skip, &flags);
    EXPECT_EQ(77u, skip);
    EXPECT_EQ(77u, flags);
    return done;
  }
};

std::string hexadecimal(const std::vector<BYTE>& bytes) {
  std::string text;
  for (const BYTE byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

TEST_F(CryptFallbacks, ProvidersCarryNothing) {
  HCRYPTPROV provider = nullptr;
  EXPECT_TRUE(FALLBACK(CryptAcquireContextW)(&provider, L"any", L"other", 99, 0));
  EXPECT_NE(nullptr, provider);
  EXPECT_TRUE(FALLBACK(CryptReleaseContext)(provider, 0));
  EXPECT_TRUE(FALLBACK(CryptAcquireContextW)(nullptr, nullptr, nullptr, 1, 0));
  EXPECT_TRUE(FALLBACK(CryptReleaseContext)(nullptr, 0));
}

TEST_F(CryptFallbacks, HashesAreOfTwoKinds) {
  HCRYPTHASH hash = this;
  EXPECT_FALSE(FALLBACK(CryptCreateHash)(nullptr, 0x800C, nullptr, 0, &hash));  // SHA-256
  EXPECT_EQ(nullptr, hash);
  EXPECT_FALSE(FALLBACK(CryptCreateHash)(nullptr, CALG_MD5, nullptr, 0, nullptr));
  EXPECT_TRUE(FALLBACK(CryptDestroyHash)(nullptr));
}

// Everything so far, each time it is asked for.
TEST_F(CryptFallbacks, DigestsCanBeReadInTheMiddle) {
  const struct {
    ALG_ID algorithm;
    const char* of_ab;
    const char* of_abc;
  } rows[] = {
      {CALG_MD5, "187ef4436122d1cc2f40dc2b92f0eba0", "900150983cd24fb0d6963f7d28e17f72"},
      {CALG_SHA1, "da23614e02469a0d7c7bd1bdab5c9c474b1904dc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
  };
  for (const auto& row : rows) {
    HCRYPTHASH hash = nullptr;
    ASSERT_TRUE(FALLBACK(CryptCreateHash)(nullptr, row.algorithm, nullptr, 0, &hash));
    const auto digest = [&] {
      DWORD size = 0;
      EXPECT_TRUE(FALLBACK(CryptGetHashParam)(hash, HP_HASHVAL, nullptr, &size, 0));
      std::vector<BYTE> bytes(size);
      EXPECT_TRUE(FALLBACK(CryptGetHashParam)(hash, HP_HASHVAL, bytes.data(), &size, 0));
      EXPECT_EQ(bytes.size(), size);
      return hexadecimal(bytes);
    };
    EXPECT_TRUE(FALLBACK(CryptHashData)(hash, reinterpret_cast<const BYTE*>("a"), 1, 0));
    EXPECT_TRUE(FALLBACK(CryptHashData)(hash, nullptr, 0, 0));
    EXPECT_TRUE(FALLBACK(CryptHashData)(hash, reinterpret_cast<const BYTE*>("b"), 1, 0));
    EXPECT_EQ(row.of_ab, digest());
    EXPECT_EQ(row.of_ab, digest());
    EXPECT_TRUE(FALLBACK(CryptHashData)(hash, reinterpret_cast<const BYTE*>("c"), 1, 0));
    EXPECT_EQ(row.of_abc, digest());
    EXPECT_FALSE(FALLBACK(CryptHashData)(hash, nullptr, 1, 0));
    EXPECT_TRUE(FALLBACK(CryptDestroyHash)(hash));
  }
  EXPECT_FALSE(FALLBACK(CryptHashData)(nullptr, reinterpret_cast<const BYTE*>("a"), 1, 0));
}

TEST_F(CryptFallbacks, DigestsFollowTheSizeProtocol) {
  HCRYPTHASH hash = nullptr;
  ASSERT_TRUE(FALLBACK(CryptCreateHash)(nullptr, CALG_SHA1, nullptr, 0, &hash));
  BYTE buffer[32];
  DWORD size = 19;
  EXPECT_FALSE(FALLBACK(CryptGetHashParam)(hash, HP_HASHVAL, buffer, &size, 0));
  EXPECT_EQ(20u, size);
  size = 32;
  EXPECT_TRUE(FALLBACK(CryptGetHashParam)(hash, HP_HASHVAL, buffer, &size, 0));
  EXPECT_EQ(20u, size);
  EXPECT_FALSE(FALLBACK(CryptGetHashParam)(hash, 1, buffer, &size, 0));
  EXPECT_FALSE(FALLBACK(CryptGetHashParam)(hash, HP_HASHVAL, buffer, nullptr, 0));
  EXPECT_FALSE(FALLBACK(CryptGetHashParam)(nullptr, HP_HASHVAL, buffer, &size, 0));
  FALLBACK(CryptDestroyHash)(hash);
}

TEST_F(CryptFallbacks, Base64TextFollowsTheSizeProtocol) {
  const BYTE bytes[] = {'a', 'b', 'c', 'd'};
  DWORD size = 0;
  EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes, 4, CRYPT_STRING_BASE64, nullptr, &size));
  EXPECT_EQ(9u, size);
  wchar_t text[16] = L"untouched";
  size = 8;
  EXPECT_FALSE(FALLBACK(CryptBinaryToStringW)(bytes, 4, CRYPT_STRING_BASE64, text, &size));
  EXPECT_EQ(9u, size);
  EXPECT_EQ(std::wstring(L"untouched"), text);
  size = 16;
  EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes, 4, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, text, &size));
  EXPECT_EQ(9u, size);  // the NUL is still counted
  EXPECT_EQ(std::wstring(L"YWJjZA=="), text);

  size = 5;
  EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes, 0, CRYPT_STRING_BASE64, nullptr, &size));
  EXPECT_EQ(1u, size);
  EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes, 0, CRYPT_STRING_BASE64, text, &size));
  EXPECT_EQ(std::wstring(), text);

  EXPECT_FALSE(FALLBACK(CryptBinaryToStringW)(nullptr, 0, CRYPT_STRING_BASE64, nullptr, &size));
  EXPECT_FALSE(FALLBACK(CryptBinaryToStringW)(bytes, 4, CRYPT_STRING_BASE64, text, nullptr));
  for (const DWORD flags : {0u, 2u, CRYPT_STRING_NOCRLF}) {
    EXPECT_FALSE(FALLBACK(CryptBinaryToStringW)(bytes, 4, flags, text, &size)) << flags;
  }
}

TEST_F(CryptFallbacks, Base64NeverBreaksLines) {
  const std::vector<BYTE> bytes(300, 0);
  std::vector<wchar_t> text(401);
  DWORD size = 401;
  EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes.data(), 300, CRYPT_STRING_BASE64, text.data(), &size));
  EXPECT_EQ(std::wstring(400, L'A'), text.data());
}

TEST_F(CryptFallbacks, Base64BytesFollowTheSizeProtocol) {
  BYTE bytes[8];
  DWORD size = 0;
  EXPECT_TRUE(decode(L"QQ==", 4, nullptr, &size));
  EXPECT_EQ(1u, size);
  EXPECT_TRUE(decode(L"QQ==", 0, bytes, &size));  // up to the NUL, into exactly enough room
  EXPECT_EQ(1u, size);
  EXPECT_EQ(0x41, bytes[0]);
  size = 8;
  EXPECT_TRUE(decode(L"QQ=A", 0, bytes, &size));
  EXPECT_EQ(2u, size);
  EXPECT_EQ(0x41, bytes[0]);
  EXPECT_EQ(0x00, bytes[1]);
  size = 2;
  std::memset(bytes, '#', sizeof bytes);
  EXPECT_FALSE(decode(L"AAEC", 0, bytes, &size));
  EXPECT_EQ(3u, size);
  EXPECT_EQ('#', bytes[0]);
  size = 8;
  EXPECT_TRUE(decode(L"AAECxyz!", 4, bytes, &size));  // not beyond the length
  EXPECT_EQ(3u, size);
  size = 8;
  const wchar_t cut[] = {L'A', L'A', 0, L'E', L'C', L'A', 0};
  EXPECT_FALSE(decode(cut, 6, bytes, &size));  // nor beyond a NUL
  EXPECT_EQ(0u, size);

  // U+0141 is 0x100 after an "A".
  for (const wchar_t* bad : {L"", L"QQ", L" \r\n\t", L"=QQQ", L"QQQ!", L"Q===", L"\u3042QQQ", L"QQQ\u0141", L"QQ==\f",
                             L"QQ==\v", L"QQ==\u3000"}) {
    size = 8;
    EXPECT_FALSE(decode(bad, 0, bytes, &size));
    EXPECT_EQ(0u, size);
    size = 8;
    EXPECT_FALSE(decode(bad, 0, nullptr, &size));
    EXPECT_EQ(0u, size);
  }
  EXPECT_FALSE(decode(nullptr, 0, bytes, &size));
  EXPECT_FALSE(decode(L"QQ==", 0, bytes, nullptr));
  size = 8;
  EXPECT_FALSE(FALLBACK(CryptStringToBinaryW)(L"QQ==", 0, 2, bytes, &size, nullptr, nullptr));
}

TEST_F(CryptFallbacks, Base64DropsBlanksAndEndsAtANul) {
  const wchar_t ended[] = {L'Q', L'Q', L'=', L'=', 0, L'!', 0};
  DWORD size = 8;
  BYTE bytes[8];
  EXPECT_TRUE(decode(ended, 6, bytes, &size));
  EXPECT_EQ(1u, size);
  for (const wchar_t* blanks : {L"Q\tQ==", L" QQ==", L"QQ=\r\n=", L"QQ== \t"}) {
    size = 8;
    EXPECT_TRUE(decode(blanks, 0, bytes, &size)) << testing::PrintToString(blanks);
    EXPECT_EQ(1u, size);
    EXPECT_EQ(0x41, bytes[0]);
  }
}

}  // namespace
// Long enough for the steps of many characters that decoding takes, with what ends such a step at every place.
class LongBase64 : public CryptFallbacks {
 protected:
  using Bytes = std::vector<BYTE>;

  LongBase64() : bytes_(kBytes) {
    for (std::size_t i = 0; i < kBytes; ++i) bytes_[i] = static_cast<BYTE>(i * 167 + 13);
    DWORD size = kCharacters + 1;
    EXPECT_TRUE(FALLBACK(CryptBinaryToStringW)(bytes_.data(), kBytes, CRYPT_STRING_BASE64, text_.data(), &size));
    text_.pop_back();
  }
  // The bytes, or none for text that is not base64. Nothing is written after them.
  std::optional<Bytes> decoded(const std::wstring& text, DWORD room) {
    Bytes out(room + 1, 0xEE);
    DWORD size = room;
    if (!decode(text.c_str(), static_cast<DWORD>(text.size()), out.data(), &size)) return std::nullopt;
    EXPECT_EQ(Bytes(out.size() - size, 0xEE), Bytes(out.begin() + size, out.end()));
    out.resize(size);
    return out;
  }

  static constexpr DWORD kBytes = 96;
  static constexpr DWORD kCharacters = 128;
  Bytes bytes_;
  std::wstring text_ = std::wstring(kCharacters + 1, L' ');
};

TEST_F(LongBase64, DropsABlankWhereverItStands) {
  for (const DWORD room : {kBytes, kBytes + 40}) {  // the room that is just enough, and more than the text can need
    EXPECT_EQ(bytes_, decoded(text_, room));
    for (std::size_t at = 0; at <= kCharacters; ++at) {
      EXPECT_EQ(bytes_, decoded(std::wstring(text_).insert(at, 1, L'\n'), room)) << at;
    }
  }
}

TEST_F(LongBase64, EndsAtANulWhereverItStands) {
  for (std::size_t at = 0; at < kCharacters; ++at) {
    std::wstring ended = text_;
    ended[at] = L'\0';
    std::optional<Bytes> whole_groups;
    if (at > 0 && at % 4 == 0) whole_groups = Bytes(bytes_.begin(), bytes_.begin() + static_cast<long>(at / 4 * 3));
    EXPECT_EQ(whole_groups, decoded(ended, kBytes)) << at;
  }
}

TEST_F(LongBase64, RefusesEveryCharacterThatIsNotOfTheAlphabet) {
  std::vector<wchar_t> others = {L'A' + 0x100, L'A' + 0x10000, L'a' + 0x8000, L'\x7FFFFFFF', static_cast<wchar_t>(-1)};
  const std::wstring_view known = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
  for (wchar_t c = 1; c < 0x200; ++c) {
    if (known.find(c) == known.npos) others.push_back(c);
  }
  for (const wchar_t other : others) {
    for (const std::size_t at : {0u, 31u, 32u, 77u, 127u}) {
      std::wstring wrong = text_;
      wrong[at] = other;
      EXPECT_EQ(std::nullopt, decoded(wrong, kBytes)) << std::hex << static_cast<long>(other) << " at " << at;
    }
  }
}

}  // namespace test
