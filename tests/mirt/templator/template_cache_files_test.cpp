// How the cache looks at a template's file: over file functions that this program puts in front of the
// component's own.
#include <gtest/gtest.h>

#include <string>
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
};
Files files;
char handle;  // its address is the handle of every file

}  // namespace

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

  bool is_taken() {
    files.calls.clear();
    CTemplate* taken = nullptr;
    EXPECT_EQ(S_OK, cache_.Take(path_, &taken));
    if (taken) taken->Release();
    return taken == tmpl_;
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
  EXPECT_EQ(Calls{}, files.calls);
}

TEST_F(TemplateCacheFiles, AreOpenedUnderThePathAsItIs) {
  store();
  EXPECT_EQ((Calls{"open", "times", "close"}), files.calls);
  EXPECT_EQ(path_.view(), files.path);
  EXPECT_EQ(5u, tmpl_->LastWrite.dwLowDateTime);
  EXPECT_TRUE(is_taken());
  EXPECT_EQ((Calls{"open", "times", "compare", "close"}), files.calls);
}

TEST_F(TemplateCacheFiles, AreClosedWhenTheyHaveChanged) {
  store();
  files.written = 4;
  EXPECT_FALSE(is_taken());
  EXPECT_EQ((Calls{"open", "times", "compare", "close"}), files.calls);
}

TEST_F(TemplateCacheFiles, KeepTheirTemplateWhenTheyCannotBeOpened) {
  store();
  files.can_be_opened = false;
  EXPECT_TRUE(is_taken());
  EXPECT_EQ(Calls{"open"}, files.calls);
  tmpl_->LastWrite = {};
  store();
  EXPECT_EQ(Calls{"open"}, files.calls);
  EXPECT_EQ(0u, tmpl_->LastWrite.dwLowDateTime);
}

TEST_F(TemplateCacheFiles, KeepTheirTemplateWhenTheirTimeCannotBeTold) {
  files.have_times = false;
  store();
  EXPECT_EQ((Calls{"open", "times", "close"}), files.calls);
  EXPECT_EQ(0u, tmpl_->LastWrite.dwLowDateTime);
  EXPECT_TRUE(is_taken());
  EXPECT_EQ((Calls{"open", "times", "close"}), files.calls);
}

}  // namespace
}  // namespace test
