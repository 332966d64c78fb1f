#include "app/page_run.h"

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
  EXPECT_EQ(site().sessions().size(), 0u);
  const auto cookies = run("<% Session('a') = 1; Session('b') = 2; %>", "").header("Set-Cookie");
  ASSERT_EQ(cookies.size(), 1u);
  EXPECT_TRUE(cookies[0].starts_with("zelto_session="));
  EXPECT_TRUE(cookies[0].ends_with("; Path=/; HttpOnly; SameSite=Lax"));
  EXPECT_EQ(site().sessions().size(), 1u);
}

TEST_F(PageRun, RemembersTheSession) {
  EXPECT_EQ(body("<% Session('n') = 1; %>"), "");
  for (int i = 0; i < 3; ++i) body("<% Session('n') += 1; %>");
  EXPECT_EQ(body("<%= Session('N') %>"), "4");
  EXPECT_EQ(run("<%= Session('n') === undefined %>", "zelto_session=guessed").body, "True");
}

TEST_F(PageRun, KeepsValuesOfAnAbandonedSessionForThePage) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie_;
  EXPECT_EQ(body("<% Session.Abandon(); Response.Write(Session('n')); %>"), "1");
  EXPECT_EQ(body("<% Response.Write(typeof Session('n')); Session('n') = 2; %>"), "undefined");
  EXPECT_NE(cookie_, first);
}

TEST_F(PageRun, GivesASessionANewIdentifier) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie_;
  EXPECT_EQ(body("<% Session.RenewID(); Response.Write(Session('n')); %>"), "1");
  EXPECT_NE(cookie_, first);
  EXPECT_EQ(body("<%= Session('n') %>"), "1");
  EXPECT_EQ(run("<%= Session('n') === undefined %>", first).body, "True");
  EXPECT_NE(body("<% Response.Flush(); try { Session.RenewID(); } catch (e) { Response.Write(e.message); } %>")
                .find("RenewID: the client cannot be told"),
            std::string::npos);
}

TEST_F(PageRun, KeepsTheTimeoutOfASessionThatHoldsNothingElse) {
  body("<% Session.Timeout = 5; %>");
  EXPECT_EQ(body("<%= Session.Timeout %>"), "5");
}

TEST_F(PageRun, BeginsInTheSessionsCodePageAndLocaleUnlessItsDirectiveSaysOtherwise) {
  const std::string tells =
      "<% Response.Write(Response.CodePage + ' ' + Response.LCID + ' \\u00E9 '); Response.Write(1.5); %>";
  EXPECT_EQ(body(tells), "65001 2048 \xC3\xA9 1.5");
  EXPECT_EQ(body("<% Session.CodePage = 1252; Session.LCID = 1031; %>" + tells), "1252 1031 \xE9 1,5");
  const MemorySink later = run(tells, cookie_);
  EXPECT_EQ(later.body, "1252 1031 \xE9 1,5");
  EXPECT_EQ(later.header("Content-Type"), std::vector<std::string>{"text/html; charset=windows-1252"});
  EXPECT_EQ(body("<%@ CodePage=65001 LCID=1033 %>" + tells), "65001 1033 \xC3\xA9 1.5");
  EXPECT_EQ(body("<%@ LCID=1036 %>" + tells), "1252 1036 \xE9 1,5");
  // The page's own settings are not the session's.
  EXPECT_EQ(body("<% Response.LCID = 1033; Response.CodePage = 65001; %>" + tells), "65001 1033 \xC3\xA9 1.5");
  EXPECT_EQ(body("<% Response.Write(Session.CodePage + ' ' + Session.LCID); %>"), "1252 1031");
  EXPECT_EQ(body("<%@ EnableSessionState=False %>" + tells), "65001 2048 \xC3\xA9 1.5");
  EXPECT_EQ(run(tells, "").body, "65001 2048 \xC3\xA9 1.5");
}

TEST_F(PageRun, DecodesItsQueryWithTheSessionsCodePage) {
  body("<% Session.CodePage = 1252; %>");
  query = "a=%E9";
  EXPECT_EQ(body("<% Response.Write(Request.QueryString('a')(1).charCodeAt(0)); %>"), "233");
}

TEST_F(PageRun, BreaksOffWhatFailsOnceTheHeadIsOut) {
  for (const bool debug : {false, true}) {
    options.debug = debug;
    restart();
    const MemorySink broken = run("begun<% Response.Flush(); none.such(); %>", "");
    EXPECT_EQ(broken.breaks, 1);
    EXPECT_EQ(broken.finishes, 0);
    EXPECT_EQ(broken.head.status, 200);
    EXPECT_EQ(broken.body.starts_with("begun<!DOCTYPE html>"), debug) << broken.body;
    EXPECT_EQ(broken.body == "begun", !debug);
    const MemorySink told = run("begun<% none.such(); %>", "");
    EXPECT_EQ(told.finishes, 1);
    EXPECT_EQ(told.breaks, 0);
    EXPECT_EQ(told.head.status, 500);
    EXPECT_EQ(told.header("Cache-Control"), std::vector<std::string>{"no-store"}) << "it may be gone with the next try";
  }
  const MemorySink unbuffered = run("<% Response.Buffer = false; none.such(); %>", "");
  EXPECT_EQ(unbuffered.head.status, 500) << "nothing was sent that the error page could not take back";
  EXPECT_EQ(unbuffered.finishes, 1);
  const MemorySink ended = run("<% Response.Flush(); Response.End(); %>", "");
  EXPECT_EQ(ended.finishes, 1);
}

// Whoever reads the log sees one line for one error, and a terminal does nothing that the line says.
TEST_F(PageRun, LogsNoControlCharacters) {
  run("<% throw new Error('a\\r\\nb\\x1B[2Jc\\x7Fd\\x1Fe'); %>", "");
  EXPECT_EQ(log, std::vector<std::string>{"/page.asp:1: a  b [2Jc d e (Error, 0x80004005)"});
}

TEST_F(PageRun, GivesAPageNoLessTimeThanTheSiteDoes) {
  options.script_timeout = std::chrono::seconds(50);
  EXPECT_EQ(body("<% Server.ScriptTimeout = 1; %><%= Server.ScriptTimeout %>"), "50");
  EXPECT_EQ(body("<% Server.ScriptTimeout = 70; %><%= Server.ScriptTimeout %>"), "70");
  EXPECT_EQ(body("<%= Server.ScriptTimeout %>"), "50");
}

TEST_F(PageRun, RefusesANewSessionOnceTheHeadIsOut) {
  EXPECT_NE(body("<% Response.Flush(); try { Session('a') = 1; } catch (e) { Response.Write(e.message); } %>")
                .find("Nothing can be kept in a new session"),
            std::string::npos);
  EXPECT_EQ(site().sessions().size(), 0u);
}

// A robot keeps no cookies: each of its requests begins a session, and none is ever asked for again.
TEST_F(PageRun, KeepsServingWhenARobotFillsTheSessions) {
  options.session_limit = 3;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ(body(count), "1");
  EXPECT_EQ(body(count), "2");
  for (int i = 0; i < 10; ++i) EXPECT_EQ(run(count, "").body, "1");
  EXPECT_EQ(site().sessions().size(), 3u);
  EXPECT_EQ(body(count), "3");
}

TEST_F(PageRun, AnswersBusyWhenEverySessionIsInUse) {
  options.session_limit = 1;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ(body(count), "1");
  EXPECT_EQ(body(count), "2");
  const MemorySink refused = run(count, "");
  EXPECT_EQ(refused.head.status, 503);
  EXPECT_TRUE(refused.header("Set-Cookie").empty());
  EXPECT_EQ(log, std::vector<std::string>{"/page.asp:1: The site keeps as many sessions as its session_limit allows, "
                                          "all of them in use. (Session, 0x80004005)"});
  EXPECT_EQ(run("<% try { Session('n') = 1; } catch (error) {} %>served", "").body, "served");
  EXPECT_EQ(body(count), "3");
}

TEST_F(PageRun, KeepsTheBagOfThePageController) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first '); }"
      "function On_StartProcess(m) { m.Bag('n') = (m.Bag('n') || 0) + 1; Response.Write(m.Bag('n')); }"
      "m.Process(); %>";
  EXPECT_EQ(body(page), "first 1");
  EXPECT_EQ(body(page), "2");
  EXPECT_EQ(body(page), "3");
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
    EXPECT_EQ(shown.find("saved"), number == '1' ? std::string::npos : 0) << shown;
    ASSERT_EQ(field(shown).size(), 7u) << shown;
    EXPECT_EQ(field(shown).back(), number);
    query = field(shown) + "=Save";
    shown = body(page);
  }
  // A page that is shown again from the browser's history submits the former name.
  EXPECT_EQ(body(page).find("saved"), std::string::npos);
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
  EXPECT_EQ(body(page), "first ");
  query = "";
  EXPECT_EQ(body(page), "");
  query = "c=Leave";
  EXPECT_EQ(body(page), "last 5");
  query = "";
  EXPECT_EQ(body(page), "first ");
}

TEST_F(PageRun, MakesABagAnewWhereTheSessionHoldsAPlainValue) {
  const std::string page =
      "<% Session('app') = 'text'; var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first'); } m.Process(); %>";
  EXPECT_EQ(body(page), "first");
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
  EXPECT_EQ(draw("one", 1), "one");
  EXPECT_EQ(draw("one", 1), "one");
  EXPECT_EQ(draw("two", 2), "two");
}

TEST_F(PageRun, AnswersAnErrorWithoutTellingTheClient) {
  const MemorySink sink = run("text <% secretName(); %>", "");
  EXPECT_EQ(sink.head.status, 500);
  EXPECT_EQ(sink.body.find("secretName"), std::string::npos);
  EXPECT_EQ(sink.body.find("text "), std::string::npos);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("secretName"), std::string::npos);
}

TEST_F(PageRun, BlamesABodyThatIsTooLargeForTheErrorItCauses) {
  body_too_large = true;
  const MemorySink sink = run("<%= Request.Form('a') %>", "");
  EXPECT_EQ(sink.head.status, 413);
  EXPECT_NE(sink.body.find("413 Content Too Large"), std::string::npos);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("The request's body is larger than the limit."), std::string::npos);
  EXPECT_EQ(run("<%= Request.TotalBytes %>", "").body, "5");
}

TEST_F(PageRun, WritesOneLineAnErrorWhateverIsInIt) {
  query = "a=%0A1%0D2%1B%5B2J";
  run("<% throw new Error(Request.QueryString('a')); %>", "");
  ASSERT_EQ(log.size(), 1u);
  EXPECT_TRUE(std::ranges::none_of(log[0], [](unsigned char c) { return c < 0x20 || c == 0x7F; })) << log[0];
}

TEST_F(PageRun, TellsTheAuthorWhatWentWrong) {
  options.debug = true;
  const MemorySink sink = run("one\n<%\nsecretName('<b>');\n%>\n", "");
  EXPECT_EQ(sink.head.status, 500);
  for (const char* piece : {"secretName", "/page.asp", "0x8", "<dt>Line</dt><dd>3</dd>",
                            "<span class=\"here\">    3  secretName('&lt;b&gt;');</span>"}) {
    EXPECT_NE(sink.body.find(piece), std::string::npos) << piece;
  }
}

TEST_F(PageRun, StopsAPageThatRunsTooLong) {
  options.script_timeout = std::chrono::seconds(1);
  const MemorySink sink = run("<% while (true) {} %>", "");
  EXPECT_EQ(sink.head.status, 500);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_NE(log[0].find("The page took longer than it may."), std::string::npos);
}

TEST_F(PageRun, StopsAPageThatTakesTooMuchMemory) {
  options.script_memory = std::size_t{64} << 20;
  const MemorySink sink = run("<% var all = []; for (;;) all.push(new Uint8Array(1e6).fill(1)); %>", "");
  EXPECT_EQ(sink.head.status, 500);
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0], "/page.asp: The page took more memory than it may. (Server, 0x8007000E)");
  EXPECT_EQ(body("still <%= 'here' %>"), "still here");
}

TEST_F(PageRun, AnswersBusyWhenTheSessionIsHeldForTooLong) {
  options.session_patience = std::chrono::seconds(0);
  body("<% Session('a') = 1; %>");
  const zelto::SessionHold held = site().sessions().open(cookie_.substr(cookie_.find('=') + 1));
  EXPECT_EQ(run("never", cookie_).head.status, 503);
}

TEST_F(PageRun, SurvivesATemplateThatIncludesItselfAndADrawThatNeverAgrees) {
  const MemorySink nested =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this;"
          "function OnDraw_again(m) { m.ProcessTemplate('(#%again#)'); } m.ProcessTemplate('(#%again#)'); %>",
          "");
  EXPECT_EQ(nested.head.status, 500);
  const MemorySink drawn =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Template = 'x';"
          "function OnDrawTemplate_x(m) { return false; } m.Process(); %>",
          "");
  EXPECT_EQ(drawn.head.status, 500);
  EXPECT_EQ(body("still <%= 'here' %>"), "still here");
}

TEST_F(PageRun, LetsGoOfTheApplicationsLock) {
  body("<% Application.Lock(); Application('n') = 1; %>");
  EXPECT_EQ(body("<% Application('n') = Application('n') + 1; %><%= Application('n') %>"), "2");
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
          EXPECT_EQ(sink.body, std::to_string(i));
        }
      });
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(site().sessions().size(), 4u);
}

}  // namespace
