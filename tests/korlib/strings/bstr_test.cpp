#include <korlib/bstr.h>

#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <korlib/combstr.h>
#include <korlib_host/diagnostics.h>

namespace {

UINT length_prefix(BSTR text) {
  UINT bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
  return bytes;
}

TEST(Bstr, CopiesTextUpToItsNul) {
  const BSTR text = SysAllocString(L"h\x00E9llo");
  ASSERT_NE(nullptr, text);
  EXPECT_EQ(5u, SysStringLen(text));
  EXPECT_EQ(20u, SysStringByteLen(text));
  EXPECT_STREQ(L"h\x00E9llo", text);
  SysFreeString(text);
}

TEST(Bstr, KeepsItsLengthInBytesBeforeTheText) {
  const BSTR text = SysAllocString(L"abc");
  EXPECT_EQ(12u, length_prefix(text));
  SysFreeString(text);
}

TEST(Bstr, ReadsNullAsTheEmptyString) {
  EXPECT_EQ(0u, SysStringLen(nullptr));
  EXPECT_EQ(0u, SysStringByteLen(nullptr));
  EXPECT_EQ(nullptr, SysAllocString(nullptr));
  SysFreeString(nullptr);
}

TEST(Bstr, TellsAnEmptyStringFromNull) {
  const BSTR text = SysAllocString(L"");
  ASSERT_NE(nullptr, text);
  EXPECT_EQ(0u, SysStringLen(text));
  EXPECT_EQ(L'\0', text[0]);
  SysFreeString(text);
}

TEST(Bstr, KeepsEmbeddedNuls) {
  const BSTR text = SysAllocStringLen(L"a\0b", 3);
  EXPECT_EQ(std::wstring_view(L"a\0b", 3), korlib::view_of(text));
  EXPECT_EQ(L'\0', text[3]);
  SysFreeString(text);
}

TEST(Bstr, LeavesTheTextToTheCallerWhenNoneIsGiven) {
  const BSTR text = SysAllocStringLen(nullptr, 4);
  ASSERT_NE(nullptr, text);
  std::wmemset(text, L'x', 4);
  EXPECT_STREQ(L"xxxx", text);
  SysFreeString(text);
}

TEST(Bstr, RoundsAnOddByteLengthDownToCharacters) {
  const struct {
    UINT bytes;
    UINT characters;
  } cases[] = {{0, 0}, {1, 0}, {3, 0}, {4, 1}, {5, 1}, {7, 1}, {8, 2}};
  for (const auto& c : cases) {
    const BSTR text = SysAllocStringByteLen("abcdefgh", c.bytes);
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(c.bytes, SysStringByteLen(text));
    EXPECT_EQ(c.characters, SysStringLen(text));
    EXPECT_EQ(0, std::memcmp(text, "abcdefgh", c.bytes));
    // A NUL character after the bytes, wherever the last of them ends.
    const char* const behind = reinterpret_cast<const char*>(text) + c.bytes;
    EXPECT_EQ(std::string(4, '\0'), std::string(behind, 4)) << c.bytes;
    SysFreeString(text);
  }
}

TEST(Bstr, RefusesLengthsThatCannotBeRepresented) {
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0x40000000u));  // 4 GiB
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0xFFFFFFFFu));
  EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, kMaxBstrBytes));
  EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, 0xFFFFFFFFu));
  EXPECT_EQ(nullptr, CComBSTR(std::wstring_view(L"", kMaxBstrBytes)).get());
}

TEST(Bstr, ReplacesAString) {
  BSTR text = SysAllocString(L"old");
  EXPECT_EQ(TRUE, SysReAllocString(&text, L"newer"));
  EXPECT_STREQ(L"newer", text);
  EXPECT_EQ(TRUE, SysReAllocStringLen(&text, L"n\0w", 3));
  EXPECT_EQ(3u, SysStringLen(text));
  EXPECT_EQ(TRUE, SysReAllocString(&text, nullptr));
  EXPECT_EQ(nullptr, text);
  EXPECT_EQ(TRUE, SysReAllocString(&text, L"again"));
  EXPECT_STREQ(L"again", text);
  SysFreeString(text);
}

TEST(Bstr, ReplacesAStringByAPartOfItself) {
  BSTR text = SysAllocString(L"0123456789");
  EXPECT_EQ(TRUE, SysReAllocStringLen(&text, text + 4, 5));
  EXPECT_STREQ(L"45678", text);
  EXPECT_EQ(TRUE, SysReAllocString(&text, text + 2));
  EXPECT_STREQ(L"678", text);
  SysFreeString(text);
}

// What lies behind its text is not the string's: it was read, and appeared in the longer one.
TEST(Bstr, IsMadeLongerByItsOwnText) {
  using namespace std::string_view_literals;
  const auto resized = [](std::size_t from, UINT length) {
    BSTR text = SysAllocString(L"0123456789");
    EXPECT_EQ(TRUE, SysReAllocStringLen(&text, text + from, length));
    std::wstring all(korlib::view_of(text));
    EXPECT_EQ(L'\0', text[length]);
    SysFreeString(text);
    return all;
  };
  EXPECT_EQ(L"0123456789\0\0\0\0"sv, resized(0, 14));
  EXPECT_EQ(L"789\0\0"sv, resized(7, 5));
  EXPECT_EQ(L"\0\0"sv, resized(10, 2));  // its end
  EXPECT_EQ(L"0123456789", resized(0, 10));
  EXPECT_EQ(L"012", resized(0, 3));
  EXPECT_EQ(L"", resized(3, 0));
  const std::wstring far_longer = resized(0, 100000);
  EXPECT_EQ(std::wstring(L"0123456789") + std::wstring(99990, L'\0'), far_longer);
}

TEST(Bstr, KeepsItsTextWhenOnlyALengthIsGiven) {
  BSTR text = nullptr;
  ASSERT_EQ(TRUE, SysReAllocStringLen(&text, nullptr, 2));
  EXPECT_EQ(std::wstring_view(L"\0\0", 2), korlib::view_of(text));
  ASSERT_EQ(TRUE, SysReAllocString(&text, L"text"));
  ASSERT_EQ(TRUE, SysReAllocStringLen(&text, nullptr, 6));
  EXPECT_EQ(std::wstring_view(L"text\0\0", 6), korlib::view_of(text));
  ASSERT_EQ(TRUE, SysReAllocStringLen(&text, nullptr, 2));
  EXPECT_STREQ(L"te", text);
  SysFreeString(text);
}

TEST(Bstr, KeepsTheOldStringWhenReplacingFails) {
  BSTR text = SysAllocString(L"kept");
  EXPECT_EQ(FALSE, SysReAllocStringLen(&text, nullptr, 0x40000000u));
  EXPECT_STREQ(L"kept", text);
  EXPECT_EQ(FALSE, SysReAllocString(nullptr, L"x"));
  EXPECT_EQ(FALSE, SysReAllocStringLen(nullptr, L"x", 1));
  SysFreeString(text);
}

TEST(Bstr, HoldsTextOfEverySizeIntact) {
  std::vector<BSTR> kept;
  for (UINT length = 0; length < 600; ++length) {
    const BSTR text = SysAllocStringLen(nullptr, length);
    ASSERT_NE(nullptr, text);
    std::wmemset(text, static_cast<wchar_t>(L'A' + length % 26), length);
    kept.push_back(text);
    if (length % 3 == 0) {  // some blocks come back while others are in use
      SysFreeString(kept[length / 2]);
      kept[length / 2] = nullptr;
    }
  }
  for (UINT length = 0; length < 600; ++length) {
    if (!kept[length]) continue;
    const std::wstring expected(length, static_cast<wchar_t>(L'A' + length % 26));
    EXPECT_EQ(expected, korlib::view_of(kept[length]));
    SysFreeString(kept[length]);
  }
}

TEST(Bstr, MayBeFreedByAnotherThread) {
  constexpr int kStrings = 5000;  // more than a thread keeps for itself
  std::vector<BSTR> made;
  for (int i = 0; i < kStrings; ++i) made.push_back(SysAllocString(L"made here, freed there"));
  std::vector<BSTR> made_there;
  std::thread([&] {
    for (const BSTR text : made) SysFreeString(text);
    for (int i = 0; i < kStrings; ++i) made_there.push_back(SysAllocString(L"made there, freed here"));
  }).join();
  for (const BSTR text : made_there) {
    EXPECT_STREQ(L"made there, freed here", text);
    SysFreeString(text);
  }
}

TEST(Bstr, MayBeMadeAndFreedWhileAThreadDestroysItsLocals) {
  struct Local {
    CComBSTR text;
    ~Local() {
      text = CComBSTR(L"a last word");
      length = text.length();
    }
    static std::array<UINT, 1>& lengths() {
      static std::array<UINT, 1> all{};
      return all;
    }
    UINT& length = lengths()[0];
  };
  std::thread([] {
    thread_local Local local;  // constructed before the cache is opened, so destroyed after it closed
    local.text = CComBSTR(L"first");
    SysFreeString(SysAllocString(L"opens the cache"));
  }).join();
  EXPECT_EQ(11u, Local::lengths()[0]);
}

// What the program has of its allocator; nothing under sanitizers, which have one of their own.
std::optional<std::size_t> bytes_in_use() {
#ifdef KOR_SANITIZED
  return std::nullopt;
#else
  return mallinfo2().uordblks;
#endif
}

constexpr UINT kLargest = 240;  // characters of a string whose block is among the largest that are kept
constexpr std::size_t kLargestBytes = kLargest * sizeof(wchar_t);

TEST(Bstr, LeavesAThreadABoundedAmountOfMemory) {
  if (!bytes_in_use()) GTEST_SKIP() << "the allocator does not tell what is in use";
  constexpr std::size_t kStrings = 4000;
  std::vector<BSTR> strings(kStrings);
  for (BSTR& text : strings) text = SysAllocStringLen(nullptr, kLargest);
  const std::size_t before = *bytes_in_use();
  for (const BSTR text : strings) SysFreeString(text);
  const std::size_t freed = before - *bytes_in_use();
  EXPECT_GT(freed, kStrings * kLargestBytes - 60000);  // 16 KiB of a size, and what the allocator keeps itself
}

// Of what is taken and given back again and again, too: the count of what is kept goes down as well as up.
TEST(Bstr, IsKeptForTheNextOneHoweverManyThereWere) {
  if (!bytes_in_use()) GTEST_SKIP() << "the allocator does not tell what is in use";
  constexpr std::size_t kKept = 16;  // more than the allocator keeps of a size
  std::array<BSTR, kKept> strings{};
  const auto take_and_give_back = [&] {
    for (BSTR& text : strings) text = SysAllocStringLen(nullptr, kLargest);
    const std::size_t before = *bytes_in_use();
    for (const BSTR text : strings) SysFreeString(text);
    return before - *bytes_in_use();
  };
  for (int i = 0; i < 100; ++i) EXPECT_EQ(0u, take_and_give_back()) << i;
}

TEST(Bstr, LeavesNothingBehindWhenItsThreadEnds) {
  if (!bytes_in_use()) GTEST_SKIP() << "the allocator does not tell what is in use";
  struct Local {
    BSTR text = nullptr;
    ~Local() { SysFreeString(text); }
  };
  const auto run_thread = [] {
    std::thread([] {
      thread_local Local local;  // freed after what the thread keeps was
      local.text = SysAllocStringLen(nullptr, kLargest);
      SysFreeString(SysAllocStringLen(nullptr, kLargest));
    }).join();
  };
  for (int i = 0; i < 10; ++i) run_thread();  // what the first threads need once
  const std::size_t before = *bytes_in_use();
  constexpr std::size_t kThreads = 200;
  for (std::size_t i = 0; i < kThreads; ++i) run_thread();
  EXPECT_LT(*bytes_in_use(), before + kThreads * kLargestBytes / 2);
}

TEST(Bstr, IsCountedWhileItLives) {
  const auto before = korlib_host::live_strings();
  if (!before) GTEST_SKIP() << "this build does not count strings";
  const BSTR text = SysAllocString(L"x");
  const BSTR other = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(*before + 2, korlib_host::live_strings());
  SysFreeString(text);
  SysFreeString(other);
  EXPECT_EQ(before, korlib_host::live_strings());
}

TEST(Bstr, CanBeMadeToFailForATest) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  const korlib_host::StringFailure failure(2);
  CComBSTR first(L"a");
  EXPECT_NE(nullptr, first.get());
  EXPECT_FALSE(failure.has_happened());
  EXPECT_EQ(nullptr, SysAllocString(L"b"));
  EXPECT_TRUE(failure.has_happened());
  CComBSTR third(L"c");
  EXPECT_NE(nullptr, third.get());
}

}  // namespace
