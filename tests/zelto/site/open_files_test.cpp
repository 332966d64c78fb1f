#include "site/open_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "http/server.h"
#include "site/static_files.h"
#include "support/temporary_folder.h"
#include "zelto/http/client.h"

namespace zelto {
namespace {

namespace fs = std::filesystem;

std::ptrdiff_t files_that_are_open() { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); }

class NoWorker final : public Worker {
 public:
  void handle(HttpRequest&& /*request*/, ResponseSink& /*sink*/) override {}
};

// A site over HTTP, whose files are asked for through one connection.
class OpenFilesTest : public testing::Test, public Router {
 protected:
  OpenFilesTest()
      : server_(
            {}, [] { return std::make_unique<NoWorker>(); }, this) {
    server_.start();
    client_.emplace(server_.port());
  }

  Route route(HttpRequest& request, ResponseSink& sink) override {
    files_.serve(request, files_.find(request.path), sink);
    return {.answered = true, .turn = {}};
  }

  zelto_test::Answer ask(const std::string& target, const std::string& headers = "") {
    client_->send("GET " + target + " HTTP/1.1\r\nHost: a\r\n" + headers + "\r\n");
    return client_->receive().value_or(zelto_test::Answer());
  }
  // So that it is open.
  std::string asked_twice(const std::string& target) {
    ask(target);
    EXPECT_TRUE(files_.find(target).open) << target;
    return ask(target).body;
  }

  void write(const std::string& name, const std::string& text) { base_.write("site/" + name, text); }
  // Nothing but the time of the change itself tells that there was one.
  void write_unseen(const std::string& name, const std::string& text) {
    struct stat before {};
    ASSERT_EQ(0, ::stat(path(name).c_str(), &before));
    std::fstream(path(name), std::ios::in | std::ios::out) << text;
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, path(name).c_str(), times, 0));
  }
  fs::path path(const std::string& name) const { return base_.path("site/" + name); }

  static StaticOptions options(const std::string& root) {
    StaticOptions options;
    options.root = root;
    return options;
  }

  const test::TemporaryFolder base_;
  const std::string first_ = base_.write("site/a.txt", "first");
  StaticFiles files_{options(base_.path("site"))};
  Server server_;
  std::optional<zelto_test::Client> client_;
};

TEST_F(OpenFilesTest, ShowsAFileThatWasEditedInPlace) {
  EXPECT_EQ("first", asked_twice("/a.txt"));
  write_unseen("a.txt", "other");
  EXPECT_EQ("other", ask("/a.txt").body);
  const std::string tag = ask("/a.txt").header("ETag");
  write("a.txt", "a longer one");
  EXPECT_EQ("a longer one", ask("/a.txt").body);
  EXPECT_EQ("12", ask("/a.txt").header("Content-Length"));
  EXPECT_EQ(200, ask("/a.txt", "If-None-Match: " + tag + "\r\n").status);
}

TEST_F(OpenFilesTest, ShowsTheFileThatHasTakenItsPlace) {
  write("b.txt", "other");
  fs::last_write_time(path("b.txt"), fs::last_write_time(path("a.txt")));
  EXPECT_EQ("first", asked_twice("/a.txt"));
  fs::rename(path("b.txt"), path("a.txt"));
  EXPECT_EQ("other", ask("/a.txt").body);
}

TEST_F(OpenFilesTest, HasNoFileThatWasDeletedOrRenamed) {
  EXPECT_EQ("first", asked_twice("/a.txt"));
  fs::rename(path("a.txt"), path("b.txt"));
  EXPECT_EQ(404, ask("/a.txt").status);
  EXPECT_EQ("first", asked_twice("/b.txt"));
  fs::remove(path("b.txt"));
  EXPECT_EQ(404, ask("/b.txt").status);
  write("b.txt", "again");
  EXPECT_EQ("again", ask("/b.txt").body);
  fs::remove(path("b.txt"));
  fs::create_directory(path("b.txt"));
  EXPECT_EQ(301, ask("/b.txt").status);
}

TEST_F(OpenFilesTest, ShowsNothingProtectedWhenTheFileBecomesALink) {
  EXPECT_EQ("first", asked_twice("/a.txt"));
  fs::rename(path("a.txt"), path("secret.inc"));
  fs::create_symlink("secret.inc", path("a.txt"));
  EXPECT_EQ(404, ask("/a.txt").status);
}

TEST_F(OpenFilesTest, ShowsNothingProtectedWhenAFolderBecomesALink) {
  for (const char* name : {"shown", "one/shown", "one/two/three/shown"}) {
    const std::string folder = name;
    const std::string target = "/" + folder + "/a.txt";
    write(folder + "/a.txt", "first");
    EXPECT_EQ("first", asked_twice(target));
    fs::rename(path(folder), path("Templates"));
    fs::create_directory_symlink(path("Templates"), path(folder));
    EXPECT_EQ(404, ask(target).status) << target;
    fs::remove_all(path("Templates"));
  }
}

TEST_F(OpenFilesTest, ShowsNoFileThatMayNoLongerBeRead) {
  const uid_t user = ::geteuid();
  constexpr uid_t kNobody = 65534;
  ASSERT_EQ(0, ::seteuid(user == 0 ? kNobody : user));
  EXPECT_EQ("first", asked_twice("/a.txt"));
  ASSERT_EQ(0, ::seteuid(user));
  fs::permissions(path("a.txt"), fs::perms::none);
  ASSERT_EQ(0, ::seteuid(user == 0 ? kNobody : user));
  EXPECT_EQ(404, ask("/a.txt").status);
  ASSERT_EQ(0, ::seteuid(user));
}

TEST_F(OpenFilesTest, SendsWhatItAnnouncedOfAFileThatGrows) {
  write("large.bin", "");
  constexpr std::size_t kSize = 20'000'000;
  fs::resize_file(path("large.bin"), kSize);
  ask("/large.bin");
  client_->send("GET /large.bin HTTP/1.1\r\nHost: a\r\n\r\n");
  std::ofstream(path("large.bin"), std::ios::app) << "more";
  const auto whole = client_->receive().value();
  EXPECT_EQ(whole.header("Content-Length"), std::to_string(whole.body.size()));
  EXPECT_EQ(kSize + 4, ask("/large.bin").body.size());
  EXPECT_EQ("first", ask("/a.txt").body);
}

TEST_F(OpenFilesTest, ShowsParts) {
  EXPECT_EQ("first", asked_twice("/a.txt"));
  const auto part = ask("/a.txt", "Range: bytes=1-2\r\n");
  EXPECT_EQ(206, part.status);
  EXPECT_EQ("ir", part.body);
  EXPECT_EQ("first", ask("/a.txt").body);
}

TEST_F(OpenFilesTest, KeepsSoManyAndNoneForLong) {
  ask("/missing");  // the server has all that it needs itself
  const auto open_before = files_that_are_open();
  const std::size_t most = StaticOptions().open_files;
  for (std::size_t i = 0; i < 2 * most; ++i) {
    const std::string name = std::to_string(i) + ".txt";
    write(name, name);
    EXPECT_EQ(name, ask("/" + name).body);
  }
  ask("/missing");  // after it the answer before has let go of its file
  EXPECT_EQ(open_before + static_cast<std::ptrdiff_t>(most), files_that_are_open());
  EXPECT_FALSE(files_.find("/0.txt").open);
  EXPECT_TRUE(files_.find("/" + std::to_string(most) + ".txt").open) << "and it is the last to go";
  files_.close_unused();
  EXPECT_EQ("first", asked_twice("/a.txt"));
  ask("/missing");
  files_.close_unused();
  EXPECT_EQ(open_before + 1, files_that_are_open());
  files_.close_unused();
  EXPECT_EQ(open_before, files_that_are_open());
}

TEST_F(OpenFilesTest, ClosesThemWhenNoMoreMayBeOpened) {
  for (const char* name : {"b.txt", "c.txt"}) write(name, name);
  EXPECT_EQ("b.txt", asked_twice("/b.txt"));
  rlimit files{};
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &files));
  const int free = ::dup(STDIN_FILENO);
  ::close(free);
  rlimit few = files;
  few.rlim_cur = static_cast<rlim_t>(free);
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &few));
  const auto answer = ask("/c.txt");
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &files));
  EXPECT_EQ("c.txt", answer.body);
}

}  // namespace
}  // namespace zelto
