#include "site/page_run.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;
using PageRun = test::PageRunFixture;

TEST_F(PageRun, BreaksOffWhatFailsOnceTheHeadIsOut) {
  for (const bool debug : {false, true}) {
    options.debug = debug;
    restart();
    const MemorySink broken = run("begun<% Response.Flush(); none.such(); %>", "");
    EXPECT_EQ(1, broken.breaks);
    EXPECT_EQ(0, broken.finishes);
    EXPECT_EQ(200, broken.head.status);
    EXPECT_EQ(debug, broken.body.starts_with("begun<!DOCTYPE html>")) << broken.body;
    EXPECT_EQ(!debug,
              broken.body == "begun\n<!-- The page ends here because of an error. Reference: " + reference + " -->\n")
        << broken.body;
    const MemorySink told = run("begun<% none.such(); %>", "");
    EXPECT_EQ(1, told.finishes);
    EXPECT_EQ(0, told.breaks);
    EXPECT_EQ(500, told.head.status);
    EXPECT_EQ(std::vector<std::string>{"no-store"}, told.header("Cache-Control")) << "it may be gone with the next try";
  }
  options.debug = false;
  restart();
  EXPECT_EQ("begun",
            run("<% Response.ContentType = 'text/plain'; %>begun<% Response.Flush(); none.such(); %>", "").body);
  const MemorySink unbuffered = run("<% Response.Buffer = false; none.such(); %>", "");
  EXPECT_EQ(500, unbuffered.head.status) << "nothing was sent that the error page could not take back";
  EXPECT_EQ(1, unbuffered.finishes);
  const MemorySink ended = run("<% Response.Flush(); Response.End(); %>", "");
  EXPECT_EQ(1, ended.finishes);
}

// Whoever reads the log sees one line for one error, and a terminal does nothing that the line says.
TEST_F(PageRun, LogsNoControlCharacters) {
  run("<% throw new Error('a\\r\\nb\\x1B[2Jc\\x7Fd\\x1Fe'); %>", "");
  EXPECT_EQ(std::vector<std::string>{"/page.asp:1: a  b [2Jc d e (Error, 0x80004005)"}, log);
}

TEST_F(PageRun, GivesAPageNoLessTimeThanTheSiteDoes) {
  options.script_timeout = std::chrono::seconds(50);
  EXPECT_EQ("50", body("<% Server.ScriptTimeout = 1; %><%= Server.ScriptTimeout %>"));
  EXPECT_EQ("70", body("<% Server.ScriptTimeout = 70; %><%= Server.ScriptTimeout %>"));
  EXPECT_EQ("50", body("<%= Server.ScriptTimeout %>"));
}

TEST_F(PageRun, AnswersAnErrorWithoutTellingTheClient) {
  const MemorySink sink = run("text <% secretName(); %>", "");
  EXPECT_EQ(500, sink.head.status);
  EXPECT_EQ(std::string::npos, sink.body.find("secretName"));
  EXPECT_EQ(std::string::npos, sink.body.find("text "));
  ASSERT_EQ(1u, log.size());
  EXPECT_NE(std::string::npos, log[0].find("secretName"));
}

TEST_F(PageRun, BlamesABodyThatIsTooLargeForTheErrorItCauses) {
  body_too_large = true;
  const MemorySink sink = run("<%= Request.Form('a') %>", "");
  EXPECT_EQ(413, sink.head.status);
  EXPECT_NE(std::string::npos, sink.body.find("413 Content Too Large"));
  ASSERT_EQ(1u, log.size());
  EXPECT_NE(std::string::npos, log[0].find("The request's body is larger than the limit."));
  EXPECT_EQ("5", run("<%= Request.TotalBytes %>", "").body);
}

TEST_F(PageRun, BlamesAFormOfTooManyFieldsForTheErrorItCauses) {
  for (int i = 0; i <= 1000; ++i) form += "a=1&";
  EXPECT_EQ(413, run("<%= Request.Form('a') %>", "").head.status);
  EXPECT_EQ(413, run("<%= Request('a') %>", "").head.status);
  EXPECT_EQ(200, run("<%= Request.TotalBytes %>", "").head.status);
  EXPECT_EQ(500, run("<% nonsense(); %>", "").head.status);
}

TEST_F(PageRun, BlamesAQueryStringOfTooManyFieldsForTheErrorItCauses) {
  for (int i = 0; i <= 1000; ++i) query += "a&";
  EXPECT_EQ(414, run("<%= Request.QueryString('a') %>", "").head.status);
  EXPECT_EQ(414, run("<%= Request('a') %>", "").head.status);
  EXPECT_EQ(200, run("<% try { Request('a') } catch (e) { Response.Write(e.message) } %>", "").head.status);
  EXPECT_EQ(200, run("<%= Request.ServerVariables('QUERY_STRING') %>", "").head.status);
  EXPECT_EQ(500, run("<% nonsense(); %>", "").head.status);
}

TEST_F(PageRun, WritesOneLineAnErrorWhateverIsInIt) {
  query = "a=%0A1%0D2%1B%5B2J";
  run("<% throw new Error(Request.QueryString('a')); %>", "");
  ASSERT_EQ(1u, log.size());
  EXPECT_TRUE(std::ranges::none_of(log[0], [](unsigned char c) { return c < 0x20 || c == 0x7F; })) << log[0];
}

TEST_F(PageRun, TellsTheAuthorWhatWentWrong) {
  options.debug = true;
  const MemorySink sink = run("one\n<%\nsecretName('<b>');\n%>\n", "");
  EXPECT_EQ(500, sink.head.status);
  for (const char* piece :
       {"secretName", "<dt>Request</dt><dd>/page.asp</dd>", "/page.asp", "0x8", "<dt>Line</dt><dd>3</dd>",
        "<dt>Column</dt><dd>11</dd>",
        "<span class=\"here\">    3  secretName('&lt;b&gt;');</span><span class=\"caret\">                 ^</span>"}) {
    EXPECT_NE(std::string::npos, sink.body.find(piece)) << piece;
  }
}

TEST_F(PageRun, TellsTheAuthorWhichFunctionsWereRunning) {
  options.debug = true;
  folder.write("part.inc", "<%\nfunction inner(x) { return x.y.z }\n%>");
  const MemorySink sink =
      run("<!--#include file=\"part.inc\"-->\n<% function outer(x) { return inner(x) } %>\n"
          "<%= outer({}) %>\n",
          "");
  EXPECT_NE(std::string::npos, sink.body.find("<li>inner(), /part.inc:2</li>\n<li>outer(), /page.asp:2</li>\n"
                                              "<li>the page, /page.asp:3</li>\n</ol>"))
      << sink.body;
  EXPECT_EQ(std::string::npos, run("<% null.x %>", "").body.find("Calls")) << "of one place there is no list";
}

TEST_F(PageRun, PutsWhatWasThrownIntoWords) {
  constexpr struct {
    const char* thrown;
    const char* words;
  } kRows[] = {
      {"'a text'", "a text (0x80004005)"},
      {"undefined", "The script threw undefined. (0x80004005)"},
      {"5", "The script threw 5. (0x80004005)"},
      {"{ code: 5 }", "The script threw {\"code\":5}. (0x80004005)"},
      {"new Error()", "The script threw an error without a message: Error. (Error, 0x80004005)"},
      {"new RangeError('')", "The script threw an error without a message: RangeError. (RangeError, 0x80004005)"},
      {"new Error('outer', { cause: new TypeError('inner') })", "outer; caused by: inner (Error, 0x80004005)"},
      {"new Error('outer: inner', { cause: new TypeError('inner') })",
       "outer: inner; caused by: inner (Error, 0x80004005)"},
      {"new Error('inner', { cause: new TypeError('inner') })", "inner (Error, 0x80004005)"},
      {"new Error('wrapped', { cause: new Error('r') })", "wrapped; caused by: r (Error, 0x80004005)"},
      {"new Error('a', { cause: new Error('b', { cause: 'c' }) })",
       "a; caused by: b; caused by: c (Error, 0x80004005)"},
  };
  for (const auto& row : kRows) {
    log.clear();
    run(std::string("<% throw ") + row.thrown + " %>", "");
    EXPECT_EQ(std::vector<std::string>{std::string("/page.asp:1: ") + row.words}, log) << row.thrown;
  }
}

// What the log has of it is not for everybody.
TEST_F(PageRun, TellsAVisitorByWhatTheLogKnowsTheError) {
  const MemorySink sink = run("<% secretName() %>", "");
  ASSERT_EQ(8u, reference.size());
  EXPECT_NE(std::string::npos, sink.body.find("<p>Reference: " + reference + "</p>")) << sink.body;
  EXPECT_EQ(std::string::npos, sink.body.find("secretName"));
  const std::string first = reference;
  run("<% secretName() %>", "");
  EXPECT_NE(first, reference);
}

TEST_F(PageRun, StopsAPageThatRunsTooLong) {
  options.script_timeout = std::chrono::seconds(1);
  const MemorySink sink = run("<%\nfunction f() { while (true) {} }\nf() %>", "");
  EXPECT_EQ(500, sink.head.status);
  EXPECT_EQ(std::vector<std::string>{"/page.asp:2: The page took longer than the site allows. Its limit is 1 s: "
                                     "script_timeout, or Server.ScriptTimeout where that is more. "
                                     "(Server, 0x80004004)"},
            log);
}

TEST_F(PageRun, StopsAPageThatTakesTooMuchMemory) {
  options.script_memory = std::size_t{64} << 20;
  const MemorySink sink = run("<% var all = []; for (;;) all.push(new Uint8Array(1e6).fill(1)); %>", "");
  EXPECT_EQ(500, sink.head.status);
  EXPECT_EQ(std::vector<std::string>{"/page.asp:1: The page took more memory than the site allows. Its limit is "
                                     "67108864 bytes: script_memory. (Server, 0x8007000E)"},
            log);
  EXPECT_EQ("still here", body("still <%= 'here' %>"));
}

TEST_F(PageRun, LeavesOutWhatAPageWritesToItsConsoleWithoutEnd) {
  EXPECT_EQ("done", body("<% for (var i = 0; i < 20000; i++) console.log('turn'); console.warn('last'); %>done"));
  constexpr std::size_t kRoom = std::size_t{64} * 1024;  // of lines such as the first one
  const std::string first = "/page.asp:1: console.log: turn";
  ASSERT_EQ(kRoom / first.size() + 2, log.size());  // a last one in part, and what says so
  EXPECT_EQ(first, log.front());
  EXPECT_EQ(first.substr(0, kRoom % first.size()), log[log.size() - 2]);
  EXPECT_EQ("/page.asp: the rest of this page's console is left out", log.back());
  EXPECT_EQ("again", body("<% console.log('turn'); %>again"));
  EXPECT_EQ(first, log.back());
}

TEST_F(PageRun, LetsGoOfTheApplicationsLock) {
  body("<% Application.Lock(); Application('n') = 1; %>");
  EXPECT_EQ("2", body("<% Application('n') = Application('n') + 1; %><%= Application('n') %>"));
}

}  // namespace
