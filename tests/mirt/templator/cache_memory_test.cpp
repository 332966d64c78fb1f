// Memory that runs out in the cache of templates: one that cannot be kept is parsed again, and nothing else happens.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/failing_allocations.h"
#include "support/temporary_folder.h"
#include "templator/template_cache.h"

namespace test {
namespace {

class FailingCache : public testing::Test {
 protected:
  CComBSTR write_file(const std::string& name, int seconds) {
    folder_.write(name, "text");
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000 + seconds, 0}};
    EXPECT_EQ(0, utimensat(AT_FDCWD, folder_.path(name).c_str(), times, 0));
    return CComBSTR(folder_.wide(name).c_str());
  }
  static bool has(CTemplateCache& cache, const CComBSTR& path, const CTemplate* tmpl) {
    CTemplate* taken = nullptr;
    EXPECT_EQ(S_OK, cache.Take(path, &taken));
    if (taken) taken->Release();
    return tmpl && taken == tmpl;
  }

  TemporaryFolder folder_;
};

TEST_F(FailingCache, KeepsATemplateOrDoesNot) {
  const CComBSTR path = write_file("a template whose name is long", 1);
  const int failures = each_allocation_failing([&](int n) {
    auto* tmpl = new CTemplate;
    auto* other = new CTemplate;
    bool failed = false;
    {
      CTemplateCache cache;
      HRESULT hr = E_FAIL;
      {
        const FailingAllocation failing(n);
        hr = cache.Store(path, tmpl);
        failed = failing.has_failed();
      }
      EXPECT_EQ(S_OK, hr) << n;
      EXPECT_EQ(!failed, has(cache, path, tmpl)) << n;
      EXPECT_EQ(failed ? 1 : 2, tmpl->RefCount) << n;
      // In its place, another one.
      {
        const FailingAllocation failing(n);
        hr = cache.Store(path, other);
      }
      EXPECT_EQ(S_OK, hr) << n;
      EXPECT_EQ(S_OK, cache.Store(path, other)) << n;
      EXPECT_TRUE(has(cache, path, other)) << n;
      EXPECT_EQ(2, other->RefCount) << n;
      EXPECT_EQ(1, tmpl->RefCount) << n;
    }
    EXPECT_EQ(0, tmpl->Release()) << n;
    EXPECT_EQ(0, other->Release()) << n;
    return failed && !HasFailure();
  });
  EXPECT_GT(failures, 0);
}

// An entry that is found, is not there, or is stale: looking asks for no memory that it cannot do without.
TEST_F(FailingCache, IsLookedAtWithoutMemory) {
  const CComBSTR path = write_file("current", 1);
  const CComBSTR stale = write_file("stale", 1);
  auto* tmpl = new CTemplate;
  {
    CTemplateCache cache;
    EXPECT_EQ(S_OK, cache.Store(path, tmpl));
    EXPECT_EQ(S_OK, cache.Store(stale, tmpl));
    write_file("stale", 2);
    tmpl->LastWrite = {};
    EXPECT_EQ(S_OK, cache.Store(path, tmpl));
    for (int n = 0; n < 3; ++n) {
      CTemplate* found = nullptr;
      CTemplate* missing = nullptr;
      {
        const FailingAllocation failing(n, FailingAllocation::kAll);
        EXPECT_EQ(S_OK, cache.Take(path, &found));
        EXPECT_EQ(S_OK, cache.Take(CComBSTR(), &missing));
      }
      EXPECT_EQ(tmpl, found);
      EXPECT_EQ(nullptr, missing);
      if (found) found->Release();
    }
    {
      CTemplate* taken = tmpl;
      bool failed = true;
      {
        const FailingAllocation failing(0, FailingAllocation::kAll);
        EXPECT_EQ(S_OK, cache.Take(stale, &taken));
        failed = failing.has_failed();
      }
      // A file that could not be looked at counts as the one that was read.
      EXPECT_EQ(failed, taken != nullptr);
      if (taken) taken->Release();
    }
    EXPECT_FALSE(has(cache, stale, tmpl));
  }
  EXPECT_EQ(0, tmpl->Release());
}

}  // namespace
}  // namespace test
