#include "site/page_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "app/big_stack.h"
#include "app/runtime.h"
#include "zelto/support/memory_sink.h"

namespace {

namespace fs = std::filesystem;
using test::MemorySink;

// A site of one page after the other, and a client that keeps its session cookie.
class PageRun : public testing::Test {
 protected:
  PageRun() {
    std::string name = (fs::temp_directory_path() / "zelto-pages-XXXXXX").string();
    options.root = fs::canonical(mkdtemp(name.data())).string();
    options.log = [this](std::string_view line) { log.emplace_back(line); };
    zelto::set_up_runtime();
  }
  ~PageRun() override { fs::remove_all(options.root); }

  zelto::Site& site() {
    if (!site_) site_.emplace(options);
    return *site_;
  }

  // Has the options as they are now hold.
  void restart() { site_.reset(); }

  // Runs the text as a page; its answer.
  MemorySink run(const std::string& text, const std::string& cookie) {
    std::ofstream(options.root + "/page.asp", std::ios::binary) << text;
    // A page of the same second would be taken for the old one.
    fs::last_write_time(options.root + "/page.asp", fs::file_time_type::clock::now() + std::chrono::hours(++pages_));
    zelto::HttpRequest request;
    request.method = "GET";
    request.path = request.target = "/page.asp";
    request.query = query;
    request.body_too_large = body_too_large;
    request.body_length = body_too_large ? 5 : 0;
    if (!cookie.empty()) request.headers.push_back({"Cookie", cookie});
    MemorySink sink;
    zelto::on_big_stack(
        [&] { zelto::PageWorker(site()).run(std::move(request), "/page.asp", options.root + "/page.asp", sink); });
    return sink;
  }
  std::string body(const std::string& text) {
    const MemorySink sink = run(text, cookie_);
    for (const std::string& set : sink.header("Set-Cookie")) cookie_ = set.substr(0, set.find(';'));
    return sink.body;
  }

  zelto::SiteOptions options;
  std::vector<std::string> log;
  std::string cookie_;
  std::string query;
  bool body_too_large = false;

 private:
  std::optional<zelto::Site> site_;
  int pages_ = 0;
};

TEST_F(PageRun, SetsNoCookieUntilSomethingIsStored) {
  EXPECT_TRUE(run("<% var x = Session('a'); %>", "").header("Set-Cookie").empty());
  EXPECT_EQ(0u, site().sessions().size());
  const auto cookies = run("<% Session('a') = 1; Session('b') = 2; %>", "").header("Set-Cookie");
  ASSERT_EQ(1u, cookies.size());
  EXPECT_TRUE(cookies[0].starts_with("zelto_session="));
  EXPECT_TRUE(cookies[0].ends_with("; Path=/; HttpOnly; SameSite=Lax"));
  EXPECT_EQ(1u, site().sessions().size());
}

TEST_F(PageRun, RemembersTheSession) {
  EXPECT_EQ("", body("<% Session('n') = 1; %>"));
  for (int i = 0; i < 3; ++i) body("<% Session('n') += 1; %>");
  EXPECT_EQ("4", body("<%= Session('N') %>"));
  EXPECT_EQ("True", run("<%= Session('n') === undefined %>", "zelto_session=guessed").body);
}

TEST_F(PageRun, KeepsValuesOfAnAbandonedSessionForThePage) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie_;
  EXPECT_EQ("1", body("<% Session.Abandon(); Response.Write(Session('n')); %>"));
  EXPECT_EQ("undefined", body("<% Response.Write(typeof Session('n')); Session('n') = 2; %>"));
  EXPECT_NE(cookie_, first);
}

TEST_F(PageRun, GivesASessionANewIdentifier) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie_;
  EXPECT_EQ("1", body("<% Session.RenewID(); Response.Write(Session('n')); %>"));
  EXPECT_NE(cookie_, first);
  EXPECT_EQ("1", body("<%= Session('n') %>"));
  EXPECT_EQ("True", run("<%= Session('n') === undefined %>", first).body);
  EXPECT_NE(std::string::npos,
            body("<% Response.Flush(); try { Session.RenewID(); } catch (e) { Response.Write(e.message); } %>")
                .find("RenewID: the client cannot be told"));
}

TEST_F(PageRun, KeepsTheTimeoutOfASessionThatHoldsNothingElse) {
  body("<% Session.Timeout = 5; %>");
  EXPECT_EQ("5", body("<%= Session.Timeout %>"));
}

TEST_F(PageRun, BeginsInTheSessionsCodePageAndLocaleUnlessItsDirectiveSaysOtherwise) {
  const std::string tells =
      "<% Response.Write(Response.CodePage + ' ' + Response.LCID + ' \\u00E9 '); Response.Write(1.5); %>";
  EXPECT_EQ("65001 2048 \xC3\xA9 1.5", body(tells));
  EXPECT_EQ("1252 1031 \xE9 1,5", body("<% Session.CodePage = 1252; Session.LCID = 1031; %>" + tells));
  const MemorySink later = run(tells, cookie_);
  EXPECT_EQ("1252 1031 \xE9 1,5", later.body);
  EXPECT_EQ(std::vector<std::string>{"text/html; charset=windows-1252"}, later.header("Content-Type"));
  EXPECT_EQ("65001 1033 \xC3\xA9 1.5", body("<%@ CodePage=65001 LCID=1033 %>" + tells));
  EXPECT_EQ("1252 1036 \xE9 1,5", body("<%@ LCID=1036 %>" + tells));
  // The page's own settings are not the session's.
  EXPECT_EQ("65001 1033 \xC3\xA9 1.5", body("<% Response.LCID = 1033; Response.CodePage = 65001; %>" + tells));
  EXPECT_EQ("1252 1031", body("<% Response.Write(Session.CodePage + ' ' + Session.LCID); %>"));
  EXPECT_EQ("65001 2048 \xC3\xA9 1.5", body("<%@ EnableSessionState=False %>" + tells));
  EXPECT_EQ("65001 2048 \xC3\xA9 1.5", run(tells, "").body);
}

TEST_F(PageRun, DecodesItsQueryWithTheSessionsCodePage) {
  body("<% Session.CodePage = 1252; %>");
  query = "a=%E9";
  EXPECT_EQ("233", body("<% Response.Write(Request.QueryString('a')(1).charCodeAt(0)); %>"));
}

TEST_F(PageRun, BreaksOffWhatFailsOnceTheHeadIsOut) {
  for (const bool debug : {false, true}) {
    options.debug = debug;
    restart();
    const MemorySink broken = run("begun<% Response.Flush(); none.such(); %>", "");
    EXPECT_EQ(1, broken.breaks);
    EXPECT_EQ(0, broken.finishes);
    EXPECT_EQ(200, broken.head.status);
    EXPECT_EQ(debug, broken.body.starts_with("begun<!DOCTYPE html>")) << broken.body;
    EXPECT_EQ(!debug, broken.body == "begun");
    const MemorySink told = run("begun<% none.such(); %>", "");
    EXPECT_EQ(1, told.finishes);
    EXPECT_EQ(0, told.breaks);
    EXPECT_EQ(500, told.head.status);
    EXPECT_EQ(std::vector<std::string>{"no-store"}, told.header("Cache-Control")) << "it may be gone with the next try";
  }
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

TEST_F(PageRun, RefusesANewSessionOnceTheHeadIsOut) {
  EXPECT_NE(std::string::npos,
            body("<% Response.Flush(); try { Session('a') = 1; } catch (e) { Response.Write(e.message); } %>")
                .find("Nothing can be kept in a new session"));
  EXPECT_EQ(0u, site().sessions().size());
}

// A robot keeps no cookies: each of its requests begins a session, and none is ever asked for again.
TEST_F(PageRun, KeepsServingWhenARobotFillsTheSessions) {
  options.session_limit = 3;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ("1", body(count));
  EXPECT_EQ("2", body(count));
  for (int i = 0; i < 10; ++i) EXPECT_EQ("1", run(count, "").body);
  EXPECT_EQ(3u, site().sessions().size());
  EXPECT_EQ("3", body(count));
}

TEST_F(PageRun, AnswersBusyWhenEverySessionIsInUse) {
  options.session_limit = 1;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ("1", body(count));
  EXPECT_EQ("2", body(count));
  const MemorySink refused = run(count, "");
  EXPECT_EQ(503, refused.head.status);
  EXPECT_TRUE(refused.header("Set-Cookie").empty());
  EXPECT_EQ(std::vector<std::string>{"/page.asp:1: The site keeps as many sessions as its session_limit allows, "
                                     "all of them in use. (Session, 0x80004005)"},
            log);
  EXPECT_EQ("served", run("<% try { Session('n') = 1; } catch (error) {} %>served", "").body);
  EXPECT_EQ("3", body(count));
}

TEST_F(PageRun, KeepsTheBagOfThePageController) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first '); }"
      "function On_StartProcess(m) { m.Bag('n') = (m.Bag('n') || 0) + 1; Response.Write(m.Bag('n')); }"
      "m.Process(); %>";
  EXPECT_EQ("first 1", body(page));
  EXPECT_EQ("2", body(page));
  EXPECT_EQ("3", body(page));
}

TEST_F(PageRun, ExpectsTheCommandInAFieldOfAnotherNameEachTime) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'keyed'; m.Backable = false;"
      "function OnCommand_Save(m) { Response.Write('saved '); }"
      "m.Process(); Response.Write(m.ToCommand('Save')); %>";
  const auto field = [](const std::string& answer) {
    const std::size_t begin = answer.find('?') + 1;
    return answer.substr(begin, answer.find('=') - begin);
  };
  // The first page too ends a command, though it has none.
  std::string shown = body(page);
  for (char number = '1'; number < '5'; ++number) {
    EXPECT_EQ(number == '1' ? std::string::npos : 0, shown.find("saved")) << shown;
    ASSERT_EQ(7u, field(shown).size()) << shown;
    EXPECT_EQ(number, field(shown).back());
    query = field(shown) + "=Save";
    shown = body(page);
  }
  // A page that is shown again from the browser's history submits the former name.
  EXPECT_EQ(std::string::npos, body(page).find("saved"));
}

TEST_F(PageRun, BeginsAndEndsTheBag) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first '); }"
      "function On_LastAccess(m) { Response.Write('last ' + m.Bag('n')); }"
      "function OnCommand_Set(m) { m.Bag('n') = 5; }"
      "function OnCommand_Leave(m) { m.Abandon(); }"
      "m.Process(); %>";
  query = "c=Set";
  EXPECT_EQ("first ", body(page));
  query = "";
  EXPECT_EQ("", body(page));
  query = "c=Leave";
  EXPECT_EQ("last 5", body(page));
  query = "";
  EXPECT_EQ("first ", body(page));
}

TEST_F(PageRun, MakesABagAnewWhereTheSessionHoldsAPlainValue) {
  const std::string page =
      "<% Session('app') = 'text'; var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first'); } m.Process(); %>";
  EXPECT_EQ("first", body(page));
}

TEST_F(PageRun, DrawsAnEditedTemplateOnTheNextRequest) {
  fs::create_directories(options.root + "/tpl");
  const auto draw = [this](const std::string& text, int hours) {
    const std::string file = options.root + "/tpl/main.html";
    std::ofstream(file, std::ios::binary) << text;
    fs::last_write_time(file, fs::file_time_type::clock::now() + std::chrono::hours(hours));
    return body(
        "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
        "m.TemplateExt = '.html'; m.Template = 'main'; m.Process(); %>");
  };
  EXPECT_EQ("one", draw("one", 1));
  EXPECT_EQ("one", draw("one", 1));
  EXPECT_EQ("two", draw("two", 2));
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
  for (const char* piece : {"secretName", "/page.asp", "0x8", "<dt>Line</dt><dd>3</dd>",
                            "<span class=\"here\">    3  secretName('&lt;b&gt;');</span>"}) {
    EXPECT_NE(std::string::npos, sink.body.find(piece)) << piece;
  }
}

TEST_F(PageRun, StopsAPageThatRunsTooLong) {
  options.script_timeout = std::chrono::seconds(1);
  const MemorySink sink = run("<% while (true) {} %>", "");
  EXPECT_EQ(500, sink.head.status);
  ASSERT_EQ(1u, log.size());
  EXPECT_NE(std::string::npos, log[0].find("The page took longer than it may."));
}

TEST_F(PageRun, StopsAPageThatTakesTooMuchMemory) {
  options.script_memory = std::size_t{64} << 20;
  const MemorySink sink = run("<% var all = []; for (;;) all.push(new Uint8Array(1e6).fill(1)); %>", "");
  EXPECT_EQ(500, sink.head.status);
  ASSERT_EQ(1u, log.size());
  EXPECT_EQ("/page.asp: The page took more memory than it may. (Server, 0x8007000E)", log[0]);
  EXPECT_EQ("still here", body("still <%= 'here' %>"));
}

TEST_F(PageRun, AnswersBusyWhenTheSessionIsHeldForTooLong) {
  options.session_patience = std::chrono::seconds(0);
  body("<% Session('a') = 1; %>");
  const zelto::SessionHold held = site().sessions().open(cookie_.substr(cookie_.find('=') + 1));
  EXPECT_EQ(503, run("never", cookie_).head.status);
}

TEST_F(PageRun, SurvivesATemplateThatIncludesItselfAndADrawThatNeverAgrees) {
  const MemorySink nested =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this;"
          "function OnDraw_again(m) { m.ProcessTemplate('(#%again#)'); } m.ProcessTemplate('(#%again#)'); %>",
          "");
  EXPECT_EQ(500, nested.head.status);
  const MemorySink drawn =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Template = 'x';"
          "function OnDrawTemplate_x(m) { return false; } m.Process(); %>",
          "");
  EXPECT_EQ(500, drawn.head.status);
  EXPECT_EQ("still here", body("still <%= 'here' %>"));
}

TEST_F(PageRun, LetsGoOfTheApplicationsLock) {
  body("<% Application.Lock(); Application('n') = 1; %>");
  EXPECT_EQ("2", body("<% Application('n') = Application('n') + 1; %><%= Application('n') %>"));
}

TEST_F(PageRun, CountsSessionsRightUnderManyClients) {
  const std::string page = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  std::ofstream(options.root + "/page.asp", std::ios::binary) << page;
  site();
  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([this] {
      zelto::on_big_stack([this] {
        zelto::PageWorker worker(site());
        std::string cookie;
        for (int i = 1; i <= 20; ++i) {
          zelto::HttpRequest request;
          request.method = "GET";
          request.path = request.target = "/page.asp";
          request.query = query;
          if (!cookie.empty()) request.headers.push_back({"Cookie", cookie});
          MemorySink sink;
          worker.run(std::move(request), "/page.asp", options.root + "/page.asp", sink);
          for (const std::string& set : sink.header("Set-Cookie")) cookie = set.substr(0, set.find(';'));
          EXPECT_EQ(std::to_string(i), sink.body);
        }
      });
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(4u, site().sessions().size());
}

}  // namespace
