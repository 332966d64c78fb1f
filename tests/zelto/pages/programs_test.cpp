#include "pages/programs.h"

#include <korlib/hresult.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zelto/pages/site_fixture.h"

namespace zelto {
namespace {

class ProgramsTest : public test::SiteFolder {
 protected:
  LoadedPage load() { return programs().load("/page.asp", path_of("page.asp")); }
  std::wstring text() {
    const LoadedPage page = load();
    if (!page.program) return L"error: " + page.error->message;
    std::wstring all;
    for (const CComBSTR& literal : page.program->literals) all += literal.view();
    return all;
  }
  // Loads until two loads give one program: then all files have been left alone for long enough.
  std::shared_ptr<const language::Program> settle() {
    while (true) {
      auto program = load().program;
      if (program == load().program) return program;
      std::this_thread::yield();
    }
  }
  Programs& programs() {
    if (!programs_) programs_ = std::make_unique<Programs>(root);
    return *programs_;
  }

 private:
  std::unique_ptr<Programs> programs_;
};

TEST_F(ProgramsTest, SharesWhatHasNotChanged) {
  write("page.asp", "a");
  const auto program = settle();
  ASSERT_TRUE(program);
  EXPECT_EQ(program, load().program);
}

TEST_F(ProgramsTest, SeesAnEditAtOnceEvenOfTheSameSize) {
  for (int i = 0; i < 50; ++i) {
    const std::string now(1, static_cast<char>('a' + i % 26));
    write("page.asp", now);
    EXPECT_EQ(std::wstring(now.begin(), now.end()), text());
  }
}

// A further edit could leave the stamp as it is. On a busy machine the second load may come late, so it is tried
// again.
TEST_F(ProgramsTest, CompilesAFreshPageEachTime) {
  bool is_compiled_again = false;
  for (int tries = 0; tries < 1000 && !is_compiled_again; ++tries) {
    write("page.asp", "a");
    const auto program = load().program;
    is_compiled_again = load().program != program;
  }
  EXPECT_TRUE(is_compiled_again);
}

TEST_F(ProgramsTest, SeesAnEditThatRestoresSizeAndTime) {
  write("page.asp", "one");
  settle();
  const auto time = std::filesystem::last_write_time(path_of("page.asp"));
  write("page.asp", "two");
  std::filesystem::last_write_time(path_of("page.asp"), time);
  EXPECT_EQ(L"two", text());
}

TEST_F(ProgramsTest, TakesThePageThatWasSeenWhenTheRequestCame) {
  write("page.asp", "one<!--#include file=a.inc-->");
  write("a.inc", "");
  const auto one = settle();
  const auto seen = pages::stamp_of(path_of("page.asp"));
  const auto load_seen = [&] { return programs().load("/page.asp", path_of("page.asp"), seen).program; };
  write("page.asp", "another");
  EXPECT_EQ(one, load_seen());
  EXPECT_EQ(L"another", text());
  EXPECT_NE(one, load_seen()) << "it is not compiled from what is no longer there";
}

TEST_F(ProgramsTest, SeesAChangedIncludeOfAPageThatWasSeen) {
  write("page.asp", "one<!--#include file=a.inc-->");
  write("a.inc", "");
  const auto one = settle();
  write("a.inc", "changed");
  const auto seen = pages::stamp_of(path_of("page.asp"));
  EXPECT_NE(one, programs().load("/page.asp", path_of("page.asp"), seen).program);
}

TEST_F(ProgramsTest, SeesAChangedIncludeOfAnInclude) {
  write("page.asp", "<!--#include file=a.inc-->");
  write("a.inc", "<!--#include file=b.inc-->");
  write("b.inc", "old");
  settle();
  write("b.inc", "new");
  EXPECT_EQ(L"new", text());
}

TEST_F(ProgramsTest, SeesALinkThatLeadsElsewhere) {
  write("one.inc", "one");
  write("two.inc", "two");
  write("page.asp", "<!--#include file=link.inc-->");
  std::filesystem::create_symlink("one.inc", path_of("link.inc"));
  settle();
  std::filesystem::remove(path_of("link.inc"));
  std::filesystem::create_symlink("two.inc", path_of("link.inc"));
  EXPECT_EQ(L"two", text());
}

TEST_F(ProgramsTest, ReportsAnErrorUntilItIsMended) {
  write("page.asp", "\n<!--#include file=none.inc-->");
  const LoadedPage page = load();
  EXPECT_FALSE(page.program);
  ASSERT_TRUE(page.error);
  EXPECT_EQ(L"Page", page.error->source);
  EXPECT_EQ(E_FAIL, page.error->number);
  EXPECT_EQ(path_of("page.asp"), page.error->file);
  EXPECT_EQ(2, page.error->line);
  write("none.inc", "there");
  EXPECT_EQ(L"\nthere", text());
  std::filesystem::remove(path_of("none.inc"));
  EXPECT_EQ(L"error: The include file \"none.inc\" was not found.", text());
  std::filesystem::remove(path_of("page.asp"));
  EXPECT_EQ(L"error: The file \"/page.asp\" cannot be read.", text());
}

TEST_F(ProgramsTest, HandsTheDirectiveOn) {
  write("page.asp", "<%@ CodePage=1252 LCID=1041 EnableSessionState=False %>");
  const LoadedPage page = load();
  EXPECT_EQ(1252, page.directive.code_page);
  EXPECT_EQ(1041, page.directive.lcid);
  EXPECT_FALSE(page.directive.uses_session);
}

TEST_F(ProgramsTest, ServesManyThreadsWhileAPageChanges) {
  write("page.asp", "<!--#include file=a.inc-->");
  write("a.inc", "0");
  programs();
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        const LoadedPage page = load();
        // An edit empties the file first.
        wrong += !page.program || page.program->literals.size() > 1;
      }
    });
  }
  for (int i = 0; i < 100; ++i) write("a.inc", std::to_string(i % 10));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(L"9", text());
}

}  // namespace
}  // namespace zelto
