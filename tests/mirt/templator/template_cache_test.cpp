// The cache of parsed templates, over real files.
#include "templator/template_cache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_folder.h"

namespace test {
namespace {

// A template of one run, to tell templates apart.
CTemplate* new_template(const wchar_t* text = L"") {
  auto* tmpl = new CTemplate;
  tmpl->Texts.push_back(SysAllocString(text));
  return tmpl;
}

class TemplateCache : public testing::Test {
 protected:
  // A file that was last written `seconds` after 2001-09-09.
  CComBSTR write_file(const std::string& name, int seconds = 0) {
    folder_.write(name, "text");
    set_time(name, seconds);
    return path_of(name);
  }
  CComBSTR path_of(const std::string& name) const { return CComBSTR(folder_.wide(name).c_str()); }
  void set_time(const std::string& name, int seconds, long nanoseconds = 0) const {
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000 + seconds, nanoseconds}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, folder_.path(name).c_str(), times, 0));
  }

  // What Take answers, as plain facts; the reference is given back.
  CTemplate* take(const CComBSTR& path) {
    auto* found = reinterpret_cast<CTemplate*>(this);  // poison
    EXPECT_EQ(S_OK, cache_.Take(path, &found));
    if (found) found->Release();
    return found;
  }

  TemporaryFolder folder_;
  CTemplateCache cache_;
};

TEST_F(TemplateCache, HasNothingAtFirst) { EXPECT_EQ(nullptr, take(write_file("a"))); }

TEST_F(TemplateCache, ServesATemplateOfAnUntouchedFile) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template();
  EXPECT_EQ(S_OK, cache_.Store(path, tmpl));
  EXPECT_EQ(2, tmpl->RefCount);
  CTemplate* taken = nullptr;
  EXPECT_EQ(S_OK, cache_.Take(path, &taken));
  EXPECT_EQ(tmpl, taken);
  EXPECT_EQ(3, tmpl->RefCount);
  EXPECT_EQ(2, taken->Release());
  EXPECT_EQ(1, tmpl->Release());
}

TEST_F(TemplateCache, RecordsTheTimeOfTheFile) {
  const CComBSTR path = write_file("a", 5);
  CTemplate* tmpl = new_template();
  cache_.Store(path, tmpl);
  // 2001-09-09 01:46:45 UTC in ticks of 100 ns since 1601.
  const ULONGLONG ticks = (1'000'000'005ULL + 11'644'473'600ULL) * 10'000'000ULL;
  EXPECT_EQ(static_cast<DWORD>(ticks), tmpl->LastWrite.dwLowDateTime);
  EXPECT_EQ(static_cast<DWORD>(ticks >> 32), tmpl->LastWrite.dwHighDateTime);
  tmpl->Release();
}

TEST_F(TemplateCache, DropsATemplateWhoseFileHasChanged) {
  for (const int seconds : {1, -1, 86400}) {  // older counts as well
    const CComBSTR path = write_file("a");
    CTemplate* tmpl = new_template();
    cache_.Store(path, tmpl);
    set_time("a", seconds);
    EXPECT_EQ(nullptr, take(path)) << seconds;
    EXPECT_EQ(1, tmpl->RefCount) << "the entry still holds it";
    set_time("a", 0);
    EXPECT_EQ(nullptr, take(path)) << "the entry has not gone";
    tmpl->Release();
  }
}

TEST_F(TemplateCache, CountsWholeSeconds) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template();
  cache_.Store(path, tmpl);
  set_time("a", 0, 999'999'999);
  EXPECT_EQ(tmpl, take(path));
  tmpl->Release();
}

TEST_F(TemplateCache, KeepsServingAFileThatIsGone) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template();
  cache_.Store(path, tmpl);
  std::filesystem::remove(folder_.path("a"));
  EXPECT_EQ(tmpl, take(path));
  EXPECT_EQ(tmpl, take(path));
  write_file("a", 7);  // and finds it changed when it is back
  EXPECT_EQ(nullptr, take(path));
  tmpl->Release();
}

TEST_F(TemplateCache, ServesAFileThatWasNeverThereUntilItIs) {
  const CComBSTR path = path_of("a");
  CTemplate* tmpl = new_template();
  cache_.Store(path, tmpl);
  EXPECT_EQ(0u, tmpl->LastWrite.dwLowDateTime);
  EXPECT_EQ(0u, tmpl->LastWrite.dwHighDateTime);
  EXPECT_EQ(tmpl, take(path));
  write_file("a");
  EXPECT_EQ(nullptr, take(path));
  tmpl->Release();
}

TEST_F(TemplateCache, KeepsTheTemplateStoredLast) {
  const CComBSTR path = write_file("a");
  CTemplate* first = new_template(L"first");
  CTemplate* second = new_template(L"second");
  cache_.Store(path, first);
  cache_.Store(path, second);
  EXPECT_EQ(1, first->RefCount);
  EXPECT_EQ(2, second->RefCount);
  EXPECT_EQ(second, take(path));
  first->Release();
  second->Release();
}

TEST_F(TemplateCache, StoresTheSameTemplateTwice) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template();
  cache_.Store(path, tmpl);
  cache_.Store(path, tmpl);
  EXPECT_EQ(2, tmpl->RefCount);
  tmpl->Release();
}

TEST_F(TemplateCache, TellsPathsApartByLetterCase) {
  const CComBSTR lower = write_file("a");
  const CComBSTR upper = write_file("A");
  CTemplate* tmpl = new_template();
  cache_.Store(lower, tmpl);
  EXPECT_EQ(nullptr, take(upper));
  EXPECT_EQ(tmpl, take(lower));
  tmpl->Release();
}

TEST_F(TemplateCache, ATemplateOutlivesItsEntryForWhoeverHoldsIt) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template(L"held");
  cache_.Store(path, tmpl);
  tmpl->Release();
  CTemplate* held = nullptr;
  cache_.Take(path, &held);
  ASSERT_NE(nullptr, held);
  set_time("a", 1);
  EXPECT_EQ(nullptr, take(path));
  EXPECT_STREQ(L"held", held->Texts[0]);
  EXPECT_EQ(0, held->Release());
}

TEST_F(TemplateCache, LetsGoOfItsTemplatesAtItsEnd) {
  const CComBSTR path = write_file("a");
  CTemplate* tmpl = new_template();
  {
    CTemplateCache short_lived;
    short_lived.Store(path, tmpl);
    EXPECT_EQ(2, tmpl->RefCount);
  }
  EXPECT_EQ(1, tmpl->Release() + 1);
}

TEST_F(TemplateCache, ServesManyThreadsWhileFilesChange) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 400;
  const CComBSTR paths[] = {write_file("a"), write_file("b"), path_of("missing")};
  std::atomic<int> hits = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      for (int round = 0; round < kRounds; ++round) {
        const std::size_t which = static_cast<std::size_t>(number + round) % std::size(paths);
        CTemplate* tmpl = nullptr;
        cache_.Take(paths[which], &tmpl);
        if (tmpl) {
          ++hits;
        } else {
          tmpl = new_template(std::to_wstring(which).c_str());
          cache_.Store(paths[which], tmpl);
        }
        EXPECT_EQ(std::to_wstring(which), tmpl->Texts[0]);
        tmpl->Release();
        if (round % 50 == number) set_time("a", round);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(hits, 0);
}

TEST(Template, CountsItsHolders) {
  CTemplate* tmpl = new_template();
  EXPECT_EQ(1, tmpl->RefCount);
  EXPECT_EQ(tmpl, tmpl->AddRef());
  EXPECT_EQ(2, tmpl->RefCount);
  EXPECT_EQ(1, tmpl->Release());
  EXPECT_EQ(0, tmpl->Release());
}

// Makes a change on two threads until they have met often enough to lose many of the changes that are not made
// atomically; how many were made. A count whose value is read and written apart tells; on one processor there is
// little to lose, and it ends all the same.
LONG change_on_two_threads(const std::function<void()>& change) {
  constexpr int kEach = 50'000;
  constexpr int kEnough = 100'000;
  LONG made = 0;
  int lost = 0;
  for (int round = 0; round < 1000 && lost < kEnough; ++round) {
    std::atomic<int> count = 0;
    std::latch together(2);
    const auto run = [&] {
      together.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) {
        change();
        count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
      }
    };
    std::thread other(run);
    run();
    other.join();
    made += 2 * kEach;
    lost += 2 * kEach - count;
  }
  return made;
}

TEST(Template, LosesNoHolderOfManyThreads) {
  CTemplate* tmpl = new_template();
  const LONG added = change_on_two_threads([tmpl] { tmpl->AddRef(); });
  EXPECT_EQ(1 + added, tmpl->RefCount);
  constexpr LONG kMany = 1'000'000'000;
  tmpl->RefCount = kMany;
  const LONG released = change_on_two_threads([tmpl] { tmpl->Release(); });
  EXPECT_EQ(kMany - released, tmpl->RefCount);
  tmpl->RefCount = 1;
  tmpl->Release();
}

}  // namespace
}  // namespace test
