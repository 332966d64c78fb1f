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
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 5u);
  EXPECT_EQ(SysStringByteLen(text), 20u);
  EXPECT_STREQ(text, L"h\x00E9llo");
  SysFreeString(text);
}

TEST(Bstr, KeepsItsLengthInBytesBeforeTheText) {
  const BSTR text = SysAllocString(L"abc");
  EXPECT_EQ(length_prefix(text), 12u);
  SysFreeString(text);
}

TEST(Bstr, ReadsNullAsTheEmptyString) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  SysFreeString(nullptr);
}

TEST(Bstr, TellsAnEmptyStringFromNull) {
  const BSTR text = SysAllocString(L"");
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 0u);
  EXPECT_EQ(text[0], L'\0');
  SysFreeString(text);
}

TEST(Bstr, KeepsEmbeddedNuls) {
  const BSTR text = SysAllocStringLen(L"a\0b", 3);
  EXPECT_EQ(korlib::view_of(text), std::wstring_view(L"a\0b", 3));
  EXPECT_EQ(text[3], L'\0');
  SysFreeString(text);
}

TEST(Bstr, LeavesTheTextToTheCallerWhenNoneIsGiven) {
  const BSTR text = SysAllocStringLen(nullptr, 4);
  ASSERT_NE(text, nullptr);
  std::wmemset(text, L'x', 4);
  EXPECT_STREQ(text, L"xxxx");
  SysFreeString(text);
}

TEST(Bstr, RoundsAnOddByteLengthDownToCharacters) {
  const struct {
    UINT bytes;
    UINT characters;
  } cases[] = {{0, 0}, {1, 0}, {3, 0}, {4, 1}, {5, 1}, {7, 1}, {8, 2}};
  for (const auto& c : cases) {
    const BSTR text = SysAllocStringByteLen("abcdefgh", c.bytes);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringByteLen(text), c.bytes);
    EXPECT_EQ(SysStringLen(text), c.characters);
    EXPECT_EQ(std::memcmp(text, "abcdefgh", c.bytes), 0);
    // A NUL character behind the bytes, wherever the last of them ends.
    const char* const behind = reinterpret_cast<const char*>(text) + c.bytes;
    EXPECT_EQ(std::string(behind, 4), std::string(4, '\0')) << c.bytes;
    SysFreeString(text);
  }
}

TEST(Bstr, RefusesLengthsThatCannotBeRepresented) {
  EXPECT_EQ(SysAllocStringLen(nullptr, 0x40000000u), nullptr);  // 4 GiB
  EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFu), nullptr);
  EXPECT_EQ(SysAllocStringByteLen(nullptr, kMaxBstrBytes), nullptr);
  EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFu), nullptr);
  EXPECT_EQ(CComBSTR(std::wstring_view(L"", kMaxBstrBytes)).get(), nullptr);
}

TEST(Bstr, ReplacesAString) {
  BSTR text = SysAllocString(L"old");
  EXPECT_EQ(SysReAllocString(&text, L"newer"), TRUE);
  EXPECT_STREQ(text, L"newer");
  EXPECT_EQ(SysReAllocStringLen(&text, L"n\0w", 3), TRUE);
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(SysReAllocString(&text, nullptr), TRUE);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(SysReAllocString(&text, L"again"), TRUE);
  EXPECT_STREQ(text, L"again");
  SysFreeString(text);
}

TEST(Bstr, ReplacesAStringByAPartOfItself) {
  BSTR text = SysAllocString(L"0123456789");
  EXPECT_EQ(SysReAllocStringLen(&text, text + 4, 5), TRUE);
  EXPECT_STREQ(text, L"45678");
  EXPECT_EQ(SysReAllocString(&text, text + 2), TRUE);
  EXPECT_STREQ(text, L"678");
  SysFreeString(text);
}

// What lies behind its text is not the string's: it was read, and appeared in the longer one.
TEST(Bstr, IsMadeLongerByItsOwnText) {
  using namespace std::string_view_literals;
  const auto resized = [](std::size_t from, UINT length) {
    BSTR text = SysAllocString(L"0123456789");
    EXPECT_EQ(SysReAllocStringLen(&text, text + from, length), TRUE);
    std::wstring all(korlib::view_of(text));
    EXPECT_EQ(text[length], L'\0');
    SysFreeString(text);
    return all;
  };
  EXPECT_EQ(resized(0, 14), L"0123456789\0\0\0\0"sv);
  EXPECT_EQ(resized(7, 5), L"789\0\0"sv);
  EXPECT_EQ(resized(10, 2), L"\0\0"sv);  // its end
  EXPECT_EQ(resized(0, 10), L"0123456789");
  EXPECT_EQ(resized(0, 3), L"012");
  EXPECT_EQ(resized(3, 0), L"");
  const std::wstring far_longer = resized(0, 100000);
  EXPECT_EQ(far_longer, std::wstring(L"0123456789") + std::wstring(99990, L'\0'));
}

TEST(Bstr, KeepsItsTextWhenOnlyALengthIsGiven) {
  BSTR text = nullptr;
  ASSERT_EQ(SysReAllocStringLen(&text, nullptr, 2), TRUE);
  EXPECT_EQ(korlib::view_of(text), std::wstring_view(L"\0\0", 2));
  ASSERT_EQ(SysReAllocString(&text, L"text"), TRUE);
  ASSERT_EQ(SysReAllocStringLen(&text, nullptr, 6), TRUE);
  EXPECT_EQ(korlib::view_of(text), std::wstring_view(L"text\0\0", 6));
  ASSERT_EQ(SysReAllocStringLen(&text, nullptr, 2), TRUE);
  EXPECT_STREQ(text, L"te");
  SysFreeString(text);
}

TEST(Bstr, KeepsTheOldStringWhenReplacingFails) {
  BSTR text = SysAllocString(L"kept");
  EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 0x40000000u), FALSE);
  EXPECT_STREQ(text, L"kept");
  EXPECT_EQ(SysReAllocString(nullptr, L"x"), FALSE);
  EXPECT_EQ(SysReAllocStringLen(nullptr, L"x", 1), FALSE);
  SysFreeString(text);
}

TEST(Bstr, HoldsTextOfEverySizeIntact) {
  std::vector<BSTR> kept;
  for (UINT length = 0; length < 600; ++length) {
    const BSTR text = SysAllocStringLen(nullptr, length);
    ASSERT_NE(text, nullptr);
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
    EXPECT_EQ(korlib::view_of(kept[length]), expected);
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
    EXPECT_STREQ(text, L"made there, freed here");
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
  EXPECT_EQ(Local::lengths()[0], 11u);
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
  EXPECT_GT(freed, kStrings * kLargestBytes - 200000);  // 64 KiB of a size, and what the allocator keeps itself
}

// Of what is taken and given back again and again, too: the count of what is kept goes down as well as up.
TEST(Bstr, IsKeptForTheNextOneHoweverManyThereWere) {
  if (!bytes_in_use()) GTEST_SKIP() << "the allocator does not tell what is in use";
  constexpr std::size_t kKept = 30;  // more than the allocator keeps of a size
  std::array<BSTR, kKept> strings{};
  const auto take_and_give_back = [&] {
    for (BSTR& text : strings) text = SysAllocStringLen(nullptr, kLargest);
    const std::size_t before = *bytes_in_use();
    for (const BSTR text : strings) SysFreeString(text);
    return before - *bytes_in_use();
  };
  for (int i = 0; i < 100; ++i) EXPECT_EQ(take_and_give_back(), 0u) << i;
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
  EXPECT_EQ(korlib_host::live_strings(), *before + 2);
  SysFreeString(text);
  SysFreeString(other);
  EXPECT_EQ(korlib_host::live_strings(), before);
}

TEST(Bstr, CanBeMadeToFailForATest) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  const korlib_host::StringFailure failure(2);
  CComBSTR first(L"a");
  EXPECT_NE(first.get(), nullptr);
  EXPECT_FALSE(failure.has_happened());
  EXPECT_EQ(SysAllocString(L"b"), nullptr);
  EXPECT_TRUE(failure.has_happened());
  CComBSTR third(L"c");
  EXPECT_NE(third.get(), nullptr);
}

}  // namespace
