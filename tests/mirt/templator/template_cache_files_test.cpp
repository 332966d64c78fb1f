// How the cache looks at a template's file, and when it holds its lock: over functions that this program puts in
// front of the component's own.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <korlib/winapi.h>

#include "templator/template_cache.h"

namespace {

using Calls = std::vector<std::string>;

struct Files {
  bool can_be_opened = true;
  bool have_times = true;
  DWORD written = 5;
  Calls calls;
  std::wstring path;
  std::function<void()> when_compared;  // once: what another thread does meanwhile
  std::function<void()> when_locked;    // at each end of the lock, while it is held
};
Files files;
char handle;  // its address is the handle of every file

}  // namespace

void EnterCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_lock(section);
  files.calls.emplace_back("lock");
  if (files.when_locked) files.when_locked();
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
  if (files.when_locked) files.when_locked();
  files.calls.emplace_back("unlock");
  pthread_mutex_unlock(section);
}

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD creation, DWORD flags,
                   HANDLE pattern) {
  files.calls.emplace_back("open");
  files.path = path;
  EXPECT_EQ(0x80000000u, access);
  EXPECT_EQ(1u, share);
  EXPECT_EQ(nullptr, security);
  EXPECT_EQ(3u, creation);
  EXPECT_EQ(128u, flags);
  EXPECT_EQ(nullptr, pattern);
  return files.can_be_opened ? &handle : invalid_handle();
}

BOOL GetFileTime(HANDLE file, FILETIME* created, FILETIME* accessed, FILETIME* written) {
  files.calls.emplace_back("times");
  EXPECT_EQ(&handle, file);
  *created = *accessed = {};
  *written = {files.written, 0};
  return files.have_times ? TRUE : FALSE;
}

LONG CompareFileTime(const FILETIME* a, const FILETIME* b) {
  files.calls.emplace_back("compare");
  if (const auto meanwhile = std::exchange(files.when_compared, nullptr)) meanwhile();
  return static_cast<LONG>(a->dwLowDateTime) - static_cast<LONG>(b->dwLowDateTime);
}

BOOL CloseHandle(HANDLE file) {
  files.calls.emplace_back("close");
  EXPECT_EQ(&handle, file);
  return TRUE;
}

namespace test {
namespace {

class TemplateCacheFiles : public testing::Test {
 protected:
  void SetUp() override { files = {}; }
  void TearDown() override { tmpl_->Release(); }

  CTemplate* take() {
    CTemplate* taken = nullptr;
    EXPECT_EQ(S_OK, cache_.Take(path_, &taken));
    if (taken) taken->Release();
    return taken;
  }
  bool is_taken() {
    files.calls.clear();
    return take() == tmpl_;
  }
  void store() {
    files.calls.clear();
    EXPECT_EQ(S_OK, cache_.Store(path_, tmpl_));
  }

  const CComBSTR path_{L"C:\\site\\..\\page.txt"};
  CTemplate* tmpl_ = new CTemplate;
  CTemplateCache cache_;
};

TEST_F(TemplateCacheFiles, AreNotLookedAtForATemplateThatIsNotThere) {
  EXPECT_FALSE(is_taken());
  EXPECT_EQ((Calls{"lock", "unlock"}), files.calls);
}

TEST_F(TemplateCacheFiles, AreOpenedUnderThePathAsItIs) {
  store();
  EXPECT_EQ((Calls{"open", "times", "close", "lock", "unlock"}), files.calls);
  EXPECT_EQ(path_.view(), files.path);
  EXPECT_EQ(5u, tmpl_->LastWrite.dwLowDateTime);
  EXPECT_TRUE(is_taken());
  EXPECT_EQ((Calls{"lock", "unlock", "open", "times", "compare", "close"}), files.calls);
  EXPECT_EQ(2, tmpl_->RefCount);
}

TEST_F(TemplateCacheFiles, AreClosedWhenTheyHaveChanged) {
  store();
  files.written = 4;
  EXPECT_FALSE(is_taken());
  EXPECT_EQ((Calls{"lock", "unlock", "open", "times", "compare", "lock", "unlock", "close"}), files.calls);
}

TEST_F(TemplateCacheFiles, KeepTheirTemplateWhenTheyCannotBeOpened) {
  store();
  files.can_be_opened = false;
  EXPECT_TRUE(is_taken());
  EXPECT_EQ((Calls{"lock", "unlock", "open"}), files.calls);
  tmpl_->LastWrite = {};
  store();
  EXPECT_EQ((Calls{"open", "lock", "unlock"}), files.calls);
  EXPECT_EQ(0u, tmpl_->LastWrite.dwLowDateTime);
}

TEST_F(TemplateCacheFiles, KeepTheirTemplateWhenTheirTimeCannotBeTold) {
  files.have_times = false;
  store();
  EXPECT_EQ((Calls{"open", "times", "close", "lock", "unlock"}), files.calls);
  EXPECT_EQ(0u, tmpl_->LastWrite.dwLowDateTime);
  EXPECT_TRUE(is_taken());
  EXPECT_EQ((Calls{"lock", "unlock", "open", "times", "close"}), files.calls);
}

// What the lock guards: references are counted, and given up with their entry, while it is held.
class TemplateCacheLock : public TemplateCacheFiles {
 protected:
  // Template and entries may be let go of too often without an end to the template.
  void SetUp() override {
    TemplateCacheFiles::SetUp();
    for (int i = 1; i < kOurs; ++i) tmpl_->AddRef();
  }
  void TearDown() override {
    files = {};
    for (int i = 1; i < kOurs; ++i) tmpl_->Release();
    TemplateCacheFiles::TearDown();
  }
  // The template's references at each end of the lock, in order.
  std::vector<LONG> counts_under_the_lock(const std::function<void()>& body) {
    std::vector<LONG> counts;
    files.when_locked = [&] { counts.push_back(tmpl_->RefCount); };
    body();
    files.when_locked = nullptr;
    return counts;
  }

  static constexpr LONG kOurs = 10;
};

TEST_F(TemplateCacheLock, IsHeldWhileAnEntryIsMade) {
  EXPECT_EQ((std::vector<LONG>{kOurs, kOurs + 1}), counts_under_the_lock([&] { store(); }));
}

TEST_F(TemplateCacheLock, IsHeldWhileAnEntryIsReplaced) {
  store();
  auto* second = new CTemplate;
  EXPECT_EQ((std::vector<LONG>{kOurs + 1, kOurs}), counts_under_the_lock([&] { cache_.Store(path_, second); }));
  second->Release();
}

TEST_F(TemplateCacheLock, IsHeldWhileATemplateIsTaken) {
  store();
  EXPECT_EQ((std::vector<LONG>{kOurs + 1, kOurs + 2}), counts_under_the_lock([&] { EXPECT_TRUE(is_taken()); }));
}

TEST_F(TemplateCacheLock, IsHeldWhileAnEntryIsForgotten) {
  store();
  files.written = 4;
  EXPECT_EQ((std::vector<LONG>{kOurs + 1, kOurs + 2, kOurs + 2, kOurs + 1}),
            counts_under_the_lock([&] { EXPECT_FALSE(is_taken()); }));
  EXPECT_EQ(kOurs, tmpl_->RefCount);
}

// Two threads find one entry stale: the second has nothing left to forget.
TEST_F(TemplateCacheLock, IsTakenToLookAgainBeforeAnEntryIsForgotten) {
  store();
  files.written = 4;
  files.when_compared = [&] { EXPECT_EQ(nullptr, take()); };
  EXPECT_EQ(nullptr, take());
  EXPECT_EQ(kOurs, tmpl_->RefCount) << "its one entry was given up once";
}

// Whatever stands there by then goes; it is parsed again when it is next asked for.
TEST_F(TemplateCacheLock, IsTakenToForgetWhatTookThePlaceOfAStaleEntry) {
  store();
  files.written = 4;
  auto* second = new CTemplate;
  files.when_compared = [&] { cache_.Store(path_, second); };
  EXPECT_EQ(nullptr, take());
  EXPECT_EQ(kOurs, tmpl_->RefCount);
  EXPECT_EQ(1, second->RefCount);
  EXPECT_EQ(nullptr, take());
  second->Release();
}

}  // namespace
}  // namespace test
