// What a page leaves behind in a database, however it ends.
#include <gtest/gtest.h>

#include <korlib_host/database.h>
#include <korlib_host/diagnostics.h>

#include "app/runtime.h"
#include "base/thread.h"
#include "site/page_run.h"
#include "support/temporary_folder.h"
#include "zelto/support/memory_sink.h"

namespace {

// Pages of a site over an SQLite file, one after the other on the thread of one worker. Each has `open()`,
// a connection to that file.
class PageDatabase : public testing::Test {
 protected:
  PageDatabase() {
    options_.root = folder_.path().string();
    options_.log = [](std::string_view) {};
    options_.script_timeout = std::chrono::seconds(1);
    zelto::set_up_runtime();
  }

  void pages(const std::function<void()>& body) {
    site_.emplace(options_);
    base::run_on_thread(zelto::kPageStack, [&] {
      zelto::script::Engine engine;
      engine_ = &engine;
      body();
    });
    engine_ = nullptr;
  }
  // The body of the page's answer.
  std::string run(const std::string& script) {
    const std::string file = "/page" + std::to_string(++pages_) + ".asp";
    folder_.write("page" + std::to_string(pages_) + ".asp",
                  "<% function open() { var c = Server.CreateObject('ADODB.Connection'); "
                  "c.Open('Driver=SQLite3;Database=" +
                      options_.root + "/test.db'); c.CommandTimeout = 1; return c; } " + script + " %>");
    zelto::HttpRequest request;
    request.method = "GET";
    request.path = request.target = file;
    if (!cookie_.empty()) request.headers.push_back({"Cookie", cookie_});
    test::MemorySink sink;
    zelto::run_page(*site_, *engine_, std::move(request), file, sink);
    for (const std::string& set : sink.header("Set-Cookie")) cookie_ = set.substr(0, set.find(';'));
    return sink.body;
  }

  const test::TemporaryFolder folder_;
  zelto::SiteOptions options_;

 private:
  std::optional<zelto::Site> site_;
  zelto::script::Engine* engine_ = nullptr;
  std::string cookie_;
  int pages_ = 0;
};

TEST_F(PageDatabase, RollsATransactionBackHoweverThePageEnds) {
  pages([this] {
    EXPECT_EQ("", run("open().Execute('CREATE TABLE t (n INTEGER)');"));
    for (const char* begin : {"c.BeginTrans();", "c.Execute('BEGIN IMMEDIATE');"}) {
      for (const char* end : {"", "Response.End();", "Response.Redirect('/');", "throw new Error('x');",
                              "while (true) {}", "c = null;", "Session.Abandon();"}) {
        run(std::string("var c = open(); ") + begin + "c.Execute('INSERT INTO t VALUES (1)'); " + end);
        // Neither seen by the same connection from the pool, nor does its lock hold a writer up.
        EXPECT_EQ("0", run("Response.Write(open().Execute('SELECT COUNT(*) FROM t')(0));")) << begin << end;
        EXPECT_EQ("", run("open().Execute('DELETE FROM t');")) << begin << end;
        EXPECT_EQ("", run("var c = open(); c.BeginTrans(); c.CommitTrans();")) << begin << end;
      }
    }
  });
}

TEST_F(PageDatabase, HoldsNoHandleAfterThePage) {
  pages([this] {
    run("open().Execute('CREATE TABLE t (n INTEGER)'); open().Execute('INSERT INTO t VALUES (1), (2), (3)');");
    const std::int64_t objects = korlib_host::live_objects();
    for (
        const char* script :
        {"var c = open(), rs = c.Execute('SELECT n FROM t'); rs.MoveNext();",
         "var rs = open().Execute('SELECT n FROM t'); Response.End();", "open().Execute('SELECT nothing');",
         "var f = open().Execute('SELECT n FROM t').Fields(0); throw f;",
         R"(var m = Server.CreateObject('Mirt'); m.Script = this; var q = m.NewADOCommand(open(), 'SELECT n FROM t', 1);
             var rs = q.Execute(); while (true) rs = q.Execute();)"}) {
      run(script);
      EXPECT_EQ(0, korlib_host::database_handles().statements) << script;
      EXPECT_EQ(objects, korlib_host::live_objects()) << script;
    }
    EXPECT_GE(2, korlib_host::database_handles().connections) << "those that lie idle";
    korlib_host::close_idle_connections();
    EXPECT_EQ(0, korlib_host::database_handles().connections);
  });
}

// In the Session it outlives its page, and its lock would hold everybody else up.
TEST_F(PageDatabase, RollsBackOnAConnectionThatOutlivesThePage) {
  pages([this] {
    EXPECT_EQ("", run("Session('c') = open(); Session('c').Execute('CREATE TABLE t (n INTEGER)');"));
    for (const char* end : {"", "Response.End();", "throw new Error('x');", "while (true) {}"}) {
      run(std::string("Session('c').BeginTrans(); Session('c').Execute('INSERT INTO t VALUES (1)'); ") + end);
      EXPECT_EQ("", run("open().Execute('DELETE FROM t');")) << end;
      EXPECT_EQ("0 0", run("Response.Write(Session('c').Execute('SELECT COUNT(*) FROM t')(0) + ' ' +"
                           "open().Execute('SELECT COUNT(*) FROM t')(0));"))
          << end;
    }
  });
}

TEST_F(PageDatabase, KeepsTheTransactionOfAPageThatRunsAnother) {
  pages([this] {
    run("open().Execute('CREATE TABLE t (n INTEGER)');");  // page1
    run("");                                               // page2
    EXPECT_EQ("1", run("var c = open(); c.BeginTrans(); c.Execute('INSERT INTO t VALUES (1)');"
                       "Server.Execute('page2.asp'); c.CommitTrans();"
                       "Response.Write(open().Execute('SELECT COUNT(*) FROM t')(0));"));
  });
}

TEST_F(PageDatabase, HasNamesForThoseWhoGoThroughAllFields) {
  pages([this] {
    EXPECT_EQ("id=1;Name=a;", run("var rs = open().Execute(\"SELECT 1 AS id, 'a' AS Name\");"
                                  "for (var k in rs.Fields) Response.Write(k + '=' + rs.Fields(k) + ';')"));
    EXPECT_EQ("first,second", run("var c = Server.CreateObject('ADODB.Command'), names = [];"
                                  "['first', 'second'].forEach(function (name) {"
                                  "  c.Parameters.Append(c.CreateParameter(name, 3)) });"
                                  "for (var k in c.Parameters) names.push(k); Response.Write(names.join())"));
  });
}

TEST_F(PageDatabase, LetsAConnectionLiveInTheSession) {
  pages([this] {
    EXPECT_EQ("", run("Session('c') = open(); Session('c').Execute('CREATE TABLE t (n INTEGER)');"));
    EXPECT_EQ("1", run("Session('c').Execute('INSERT INTO t VALUES (1)');"
                       "Response.Write(Session('c').Execute('SELECT COUNT(*) FROM t')(0));"));
  });
}

// None of these ever ends by itself.
TEST_F(PageDatabase, StopsWhatADatabaseDoesWhenThePageIsLate) {
  std::vector<std::string> log;
  options_.log = [&log](std::string_view line) { log.emplace_back(line); };
  pages([&] {
    const std::string rows = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT ";
    for (const std::string& use :
         {"c.Execute('" + rows + "COUNT(*) FROM n')", "c.Execute('" + rows + "i FROM n').Move(2000000000)",
          "c.Execute('" + rows + "i FROM n').GetRows()", "c.CursorLocation = 3; c.Execute('" + rows + "i FROM n')"}) {
      log.clear();
      run("var c = open(); c.CommandTimeout = 0; for (;;) try { " + use + " } catch (e) {}");
      ASSERT_EQ(1u, log.size()) << use;
      EXPECT_NE(std::string::npos, log[0].find("The page took longer than the site allows.")) << log[0];
    }
    EXPECT_EQ("5", run("Response.Write(open().Execute('SELECT 5')(0).Value)")) << "and the next page has its time";
  });
}

}  // namespace
