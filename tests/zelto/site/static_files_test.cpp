#include "site/static_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "http/server.h"
#include "http/status.h"
#include "support/temporary_folder.h"
#include "text/http_date.h"
#include "zelto/http/client.h"

namespace zelto {
namespace {

namespace fs = std::filesystem;
using Kind = FoundFile::Kind;

// Serves its site over HTTP; pages are answered with their path.
class SiteWorker final : public Worker {
 public:
  explicit SiteWorker(const StaticFiles& files) : files_(files) {}
  void handle(HttpRequest&& request, ResponseSink& sink) override {
    const FoundFile found = files_.find(request.path);
    if (found.kind == Kind::page) return serve_status(sink, 200, "page " + found.path);
    files_.serve(request, found, sink);
  }

 private:
  const StaticFiles& files_;
};

class StaticFilesTest : public testing::Test {
 protected:
  StaticFilesTest() {
    write("index.html", "home");
    write("style.css", "0123456789");
    write("page.asp", "<% %>");
    write("UPPER.ASP", "<% %>");
    write("global.asa", "secret");
    write("zelto.toml", "secret");
    write("part.inc", "secret");
    write("row.TPL", "secret");
    write(".hidden", "secret");
    write("_private", "secret");
    for (const char* name : {"page.asp~", "page.asp.bak", "page.asp.OLD", "page.asp.orig", ".page.asp.swp"})
      write(name, "secret");
    for (const char* name : {"notes.db", "notes.DB-wal", "notes.db-journal", "a.sqlite", "a.sqlite3", "a.sqlite3-shm"})
      write(name, "secret");
    write("a.dbx", "fine");
    write("Templates/list.html", "secret");
    write(".git/config", "secret");
    write("sub/default.asp", "<% %>");
    write("sub dir/a.txt", "a");
    write("empty/.keep", "");
    write("asa.txt", "fine");
    base_.write("outside.txt", "secret");
    fs::create_symlink("../outside.txt", root_ / "leak.txt");
    fs::create_symlink(base_.path("outside.txt"), root_ / "absolute.txt");
    fs::create_symlink("..", root_ / "up");
    fs::create_symlink("style.css", root_ / "alias.css");
    fs::create_symlink("part.inc", root_ / "notes.txt");
    fs::create_symlink("notes.txt", root_ / "twice.txt");
    fs::create_symlink("Templates", root_ / "public");
    fs::create_symlink("sub dir", root_ / "other");
    fs::create_symlink("page.asp", root_ / "source.txt");
    fs::create_symlink("style.css", root_ / "code.asp");
    write("page.v2", "<% %>");
    fs::create_symlink("page.v2", root_ / "current.asp");
    EXPECT_EQ(0, ::mkfifo((root_ / "pipe.txt").c_str(), 0600));
  }

  void write(const std::string& name, const std::string& text) { base_.write("site/" + name, text); }

  StaticOptions options() const {
    StaticOptions options;
    options.root = root_.string();
    return options;
  }

  const test::TemporaryFolder base_;
  const fs::path root_ = base_.path("site");
};

TEST_F(StaticFilesTest, FindsWhatAPathNames) {
  struct Row {
    const char* path;
    Kind kind;
    const char* found;
  };
  const Row rows[] = {
      {"/", Kind::file, "/index.html"},         {"/style.css", Kind::file, "/style.css"},
      {"/alias.css", Kind::file, "/alias.css"}, {"/asa.txt", Kind::file, "/asa.txt"},
      {"/a.dbx", Kind::file, "/a.dbx"},         {"/page.asp", Kind::page, "/page.asp"},
      {"/UPPER.ASP", Kind::page, "/UPPER.ASP"}, {"/sub/", Kind::page, "/sub/default.asp"},
      {"/sub", Kind::redirect, "/sub/"},        {"/sub dir", Kind::redirect, "/sub dir/"},
  };
  const StaticFiles files(options());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    const FoundFile found = files.find(row.path);
    EXPECT_EQ(row.kind, found.kind);
    EXPECT_EQ(row.found, found.path);
    const bool exists = row.kind != Kind::redirect;
    EXPECT_EQ(exists ? root_.string() + row.found : "", found.physical);
  }
}

TEST_F(StaticFilesTest, FindsWhatALinkLeadsToByItsOwnName) {
  struct Row {
    const char* path;
    Kind kind;
    const char* found;
  };
  const Row rows[] = {
      {"/notes.txt", Kind::protected_name, "part.inc"},
      {"/twice.txt", Kind::protected_name, "part.inc"},
      {"/public", Kind::protected_name, "Templates"},
      {"/public/", Kind::protected_name, "Templates"},
      {"/public/list.html", Kind::protected_name, "Templates"},
      {"/other/a.txt", Kind::file, "/other/a.txt"},
      {"/other", Kind::redirect, "/other/"},
      {"/source.txt", Kind::page, "/page.asp"},
      {"/code.asp", Kind::page, "/code.asp"},
      {"/current.asp", Kind::page, "/current.asp"},
  };
  const StaticFiles files(options());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    const FoundFile found = files.find(row.path);
    EXPECT_EQ(row.kind, found.kind);
    EXPECT_EQ(row.found, found.path);
  }
}

TEST_F(StaticFilesTest, RefusesUnknownTypesWhenAskedTo) {
  write(".well-known/acme-challenge/token", "token");
  StaticOptions strict = options();
  strict.refuses_unknown_types = true;
  const StaticFiles files(strict);
  fs::create_symlink("a.dbx", root_ / "known.txt");
  EXPECT_EQ(Kind::none, files.find("/a.dbx").kind);
  EXPECT_EQ(Kind::none, files.find("/known.txt").kind);
  EXPECT_EQ(Kind::file, files.find("/style.css").kind);
  EXPECT_EQ(Kind::page, files.find("/page.asp").kind);
  EXPECT_EQ(Kind::file, files.find("/.well-known/acme-challenge/token").kind);
}

TEST_F(StaticFilesTest, FindsNothingElse) {
  const StaticFiles files(options());
  for (const char* path : {"/missing", "/page.asp/", "/page.asp/info", "/style.css/", "/empty/", "/leak.txt",
                           "/absolute.txt", "/up/outside.txt", "/up/", "/pipe.txt"})
    EXPECT_EQ(Kind::none, files.find(path).kind) << path;
}

TEST_F(StaticFilesTest, FindsNoProtectedName) {
  struct Row {
    const char* path;
    const char* name;
  };
  const Row rows[] = {
      {"/global.asa", "global.asa"},
      {"/Templates", "Templates"},
      {"/Templates/", "Templates"},
      {"/Templates/list.html", "Templates"},
      {"/templates/missing.html", "templates"},
      {"/_private", "_private"},
      {"/notes.DB-wal", "notes.DB-wal"},
      {"/.git/config", ".git"},
      {"/sub/.hidden", ".hidden"},
  };
  const StaticFiles files(options());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    const FoundFile found = files.find(row.path);
    EXPECT_EQ(Kind::protected_name, found.kind);
    EXPECT_EQ(row.name, found.path);
    EXPECT_EQ("", found.physical);
  }
}

TEST_F(StaticFilesTest, TakesNamesToProtectFromTheOptions) {
  StaticOptions own = options();
  for (const char* name : {"sub dir/", "style.css", "*.txt"}) ASSERT_TRUE(own.protected_names.add(name)) << name;
  own.default_documents = {"global.asa", "alias.css", "a.dbx"};
  const StaticFiles files(own);
  EXPECT_EQ(Kind::protected_name, files.find("/sub dir/a.b").kind);
  EXPECT_EQ(Kind::protected_name, files.find("/Style.css").kind);
  EXPECT_EQ(Kind::protected_name, files.find("/asa.txt").kind);
  EXPECT_EQ(Kind::protected_name, files.find("/Templates/list.html").kind);
  EXPECT_EQ(Kind::protected_name, files.find("/alias.css").kind);
  EXPECT_EQ("/a.dbx", files.find("/").path);
}

TEST_F(StaticFilesTest, NeedsItsFolder) {
  StaticOptions missing = options();
  missing.root += "/none";
  EXPECT_THROW(StaticFiles{missing}, std::system_error);
}

class StaticHttp : public StaticFilesTest {
 protected:
  StaticHttp() : files_(options()), server_(server_options(), [this] { return std::make_unique<SiteWorker>(files_); }) {
    server_.start();
  }

  static ServerOptions server_options() {
    ServerOptions options;
    options.limits.body_bytes = 10;
    return options;
  }

  zelto_test::Answer ask(const std::string& method, const std::string& target, const std::string& headers = "") {
    zelto_test::Client client(server_.port());
    client.send(method + " " + target + " HTTP/1.1\r\nHost: a\r\n" + headers + "\r\n");
    return client.receive(method == "HEAD").value_or(zelto_test::Answer());
  }

  StaticFiles files_;
  Server server_;
};

TEST_F(StaticHttp, ServesAFile) {
  const auto answer = ask("GET", "/style.css");
  EXPECT_EQ(200, answer.status);
  EXPECT_EQ("0123456789", answer.body);
  EXPECT_EQ("text/css; charset=utf-8", answer.header("Content-Type"));
  EXPECT_EQ("bytes", answer.header("Accept-Ranges"));
  struct stat status {};
  ASSERT_EQ(0, ::stat((root_ / "style.css").c_str(), &status));
  EXPECT_EQ(http_date(status.st_mtim.tv_sec), answer.header("Last-Modified"));
  const auto head = ask("HEAD", "/style.css");
  EXPECT_EQ(200, head.status);
  EXPECT_EQ("10", head.header("Content-Length"));
}

TEST_F(StaticHttp, OffersAFileOfUnknownTypeAsADownload) {
  const auto answer = ask("GET", "/a.dbx");
  EXPECT_EQ(200, answer.status);
  EXPECT_EQ("application/octet-stream", answer.header("Content-Type"));
  EXPECT_EQ("attachment", answer.header("Content-Disposition"));
  EXPECT_EQ("nosniff", answer.header("X-Content-Type-Options"));
  EXPECT_EQ("", ask("GET", "/style.css").header("Content-Disposition"));
}

TEST_F(StaticHttp, ServesLargeFilesWhole) {
  std::string text;
  for (int i = 0; text.size() < 5'000'000; ++i) text += std::to_string(i) + "\n";
  write("large.txt", text);
  EXPECT_EQ(text, ask("GET", "/large.txt").body);
}

// The file is sent as the client takes it, so that it may shrink meanwhile.
TEST_F(StaticHttp, ShowsThatAFileHasBecomeShorter) {
  write("large.bin", "");
  fs::resize_file(root_ / "large.bin", 50'000'000);
  zelto_test::Client client(server_.port());
  client.send("GET /large.bin HTTP/1.1\r\nHost: a\r\n\r\nGET /style.css HTTP/1.1\r\nHost: a\r\n\r\n");
  ASSERT_EQ("50000000", client.receive(true).value().header("Content-Length"));
  fs::resize_file(root_ / "large.bin", 10);
  EXPECT_LT(client.read_to_end().size(), 50'000'000U);
  EXPECT_TRUE(client.was_reset());
}

TEST_F(StaticHttp, SavesSendingWhatTheClientHas) {
  const auto first = ask("GET", "/style.css");
  const std::string tag = first.header("ETag");
  const std::string date = first.header("Last-Modified");
  struct Row {
    std::string headers;
    int status;
  };
  const Row rows[] = {{"If-None-Match: " + tag + "\r\n", 304},
                      {"If-None-Match: \"x\", W/" + tag + "\r\n", 304},
                      {"If-None-Match: *\r\n", 304},
                      {"If-None-Match: \"x\"\r\n", 200},
                      {"If-None-Match: \"x\"\r\nIf-Modified-Since: " + date + "\r\n", 200},
                      {"If-Modified-Since: " + date + "\r\n", 304},
                      {"If-Modified-Since: Sun, 06 Nov 1994 08:49:37 GMT\r\n", 200},
                      {"If-Modified-Since: yesterday\r\n", 200}};
  for (const Row& row : rows) {
    const auto answer = ask("GET", "/style.css", row.headers);
    EXPECT_EQ(row.status, answer.status) << row.headers;
    EXPECT_EQ(tag, answer.header("ETag")) << row.headers;
  }
  write("style.css", "changed: another size");
  EXPECT_EQ(200, ask("GET", "/style.css", "If-None-Match: " + tag + "\r\n").status);
}

TEST_F(StaticHttp, SendsOneRange) {
  const auto part = ask("GET", "/style.css", "Range: bytes=2-4\r\n");
  EXPECT_EQ(206, part.status);
  EXPECT_EQ("234", part.body);
  EXPECT_EQ("bytes 2-4/10", part.header("Content-Range"));
  const auto none = ask("GET", "/style.css", "Range: bytes=10-\r\n");
  EXPECT_EQ(416, none.status);
  EXPECT_EQ("bytes */10", none.header("Content-Range"));
  EXPECT_EQ("0123456789", ask("GET", "/style.css", "Range: bytes=1-2,4-5\r\n").body);
  EXPECT_EQ("0123456789", ask("GET", "/style.css", "Range: bytes=2-4\r\nIf-Range: \"old\"\r\n").body);
  EXPECT_EQ("234", ask("GET", "/style.css", "Range: bytes=2-4\r\nIf-Range: " + part.header("ETag") + "\r\n").body);
  EXPECT_EQ("234",
            ask("GET", "/style.css", "Range: bytes=2-4\r\nIf-Range: " + part.header("Last-Modified") + "\r\n").body);
}

TEST_F(StaticHttp, AnswersWhatIsNotAFile) {
  EXPECT_EQ(404, ask("GET", "/missing").status);
  EXPECT_EQ(404, ask("GET", "/Templates/list.html").status);
  EXPECT_EQ("/sub/", ask("GET", "/sub").header("Location"));
  EXPECT_EQ("/sub%20dir/?a=b", ask("GET", "//sub%20dir?a=b").header("Location"));
  EXPECT_EQ(301, ask("GET", "/sub").status);
  EXPECT_EQ(405, ask("POST", "/style.css").status);
  EXPECT_EQ("GET, HEAD", ask("POST", "/style.css").header("Allow"));
  EXPECT_EQ(405, ask("POST", "/style.css", "Content-Length: 11\r\n").status) << "before its body is looked at";
  EXPECT_EQ(200, ask("GET", "/sub/").status);
}

}  // namespace
}  // namespace zelto
