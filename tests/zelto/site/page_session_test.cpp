#include "site/page_session.h"

#include <gtest/gtest.h>
#include <korlib_host/diagnostics.h>

#include <thread>

#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;
using PageSession = test::PageRunFixture;

TEST_F(PageSession, SetsNoCookieUntilSomethingIsStored) {
  EXPECT_TRUE(run("<% var x = Session('a'); %>", "").header("Set-Cookie").empty());
  EXPECT_EQ(0u, site().sessions().size());
  const auto cookies = run("<% Session('a') = 1; Session('b') = 2; %>", "").header("Set-Cookie");
  ASSERT_EQ(1u, cookies.size());
  EXPECT_TRUE(cookies[0].starts_with("zelto_session="));
  EXPECT_TRUE(cookies[0].ends_with("; Path=/; HttpOnly; SameSite=Lax"));
  EXPECT_EQ(1u, site().sessions().size());
}

TEST_F(PageSession, RemembersTheSession) {
  EXPECT_EQ("", body("<% Session('n') = 1; %>"));
  for (int i = 0; i < 3; ++i) body("<% Session('n') += 1; %>");
  EXPECT_EQ("4", body("<%= Session('N') %>"));
  EXPECT_EQ("True", run("<%= Session('n') === undefined %>", "zelto_session=guessed").body);
}

TEST_F(PageSession, KeepsValuesOfAnAbandonedSessionForThePage) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie;
  EXPECT_EQ("1", body("<% Session.Abandon(); Response.Write(Session('n')); %>"));
  EXPECT_EQ("undefined", body("<% Response.Write(typeof Session('n')); Session('n') = 2; %>"));
  EXPECT_NE(cookie, first);
}

TEST_F(PageSession, GivesASessionANewIdentifier) {
  body("<% Session('n') = 1; %>");
  const std::string first = cookie;
  EXPECT_EQ("1", body("<% Session.RenewID(); Response.Write(Session('n')); %>"));
  EXPECT_NE(cookie, first);
  EXPECT_EQ("1", body("<%= Session('n') %>"));
  EXPECT_EQ("True", run("<%= Session('n') === undefined %>", first).body);
  EXPECT_NE(std::string::npos,
            body("<% Response.Flush(); try { Session.RenewID(); } catch (e) { Response.Write(e.message); } %>")
                .find("RenewID: the client cannot be told"));
}

TEST_F(PageSession, KeepsTheTimeoutOfASessionThatHoldsNothingElse) {
  body("<% Session.Timeout = 5; %>");
  EXPECT_EQ("5", body("<%= Session.Timeout %>"));
}

TEST_F(PageSession, BeginsInTheSessionsCodePageAndLocaleUnlessItsDirectiveSaysOtherwise) {
  const std::string tells =
      "<% Response.Write(Response.CodePage + ' ' + Response.LCID + ' \\u00E9 '); Response.Write(1.5); %>";
  EXPECT_EQ("65001 2048 \xC3\xA9 1.5", body(tells));
  EXPECT_EQ("1252 1031 \xE9 1,5", body("<% Session.CodePage = 1252; Session.LCID = 1031; %>" + tells));
  const MemorySink later = run(tells, cookie);
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

TEST_F(PageSession, DecodesItsQueryWithTheSessionsCodePage) {
  body("<% Session.CodePage = 1252; %>");
  query = "a=%E9";
  EXPECT_EQ("233", body("<% Response.Write(Request.QueryString('a')(1).charCodeAt(0)); %>"));
}

TEST_F(PageSession, RefusesANewSessionOnceTheHeadIsOut) {
  EXPECT_NE(std::string::npos,
            body("<% Response.Flush(); try { Session('a') = 1; } catch (e) { Response.Write(e.message); } %>")
                .find("Nothing can be kept in a new session"));
  EXPECT_EQ(0u, site().sessions().size());
}

// A robot keeps no cookies: each of its requests begins a session, and none is ever asked for again.
TEST_F(PageSession, KeepsServingWhenARobotFillsTheSessions) {
  options.session_limit = 3;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ("1", body(count));
  EXPECT_EQ("2", body(count));
  for (int i = 0; i < 10; ++i) EXPECT_EQ("1", run(count, "").body);
  EXPECT_EQ(3u, site().sessions().size());
  EXPECT_EQ("3", body(count));
}

// Somebody who comes back to each of his sessions cannot lock others out.
TEST_F(PageSession, ServesANewcomerWhenOneAddressHasAllSessions) {
  options.session_limit = 3;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  std::vector<std::string> cookies;
  for (int i = 0; i < 3; ++i) {
    cookie.clear();
    EXPECT_EQ("1", body(count));
    EXPECT_EQ("2", body(count));
    cookies.push_back(cookie);
  }
  address = "192.0.2.7";
  cookie.clear();
  EXPECT_EQ("1", body(count));
  EXPECT_EQ("2", body(count));
  address.clear();
  EXPECT_EQ("3", run(count, cookies[1]).body);
  EXPECT_EQ("1", run(count, cookies[0]).body);
  EXPECT_EQ("3", body(count));
}

TEST_F(PageSession, AnswersBusyWhenEverySessionIsInUse) {
  options.session_limit = 1;
  const std::string count = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  EXPECT_EQ("1", body(count));
  EXPECT_EQ("2", body(count));
  auto used = std::make_optional(site().sessions().open(cookie.substr(cookie.find('=') + 1)));
  const MemorySink refused = run(count, "");
  EXPECT_EQ(503, refused.head.status);
  EXPECT_TRUE(refused.header("Set-Cookie").empty());
  EXPECT_EQ(std::vector<std::string>{"/page.asp:1: The site keeps as many sessions as its session_limit allows, "
                                     "all of them in use. (Session, 0x80004005)"},
            log);
  EXPECT_EQ("served", run("<% try { Session('n') = 1; } catch (error) {} %>served", "").body);
  used.reset();
  EXPECT_EQ("3", body(count));
}

TEST_F(PageSession, TellsWhereItWasRefused) {
  options.session_limit = 1;
  body("<% Session('n') = 1; %>");
  const zelto::SessionHold used = site().sessions().open(cookie.substr(cookie.find('=') + 1));
  folder.write("child.asp", "<%\nvar id = Session.SessionID; %>");
  constexpr struct {
    const char* page;
    const char* place;
  } kRows[] = {{"<%\nvar id = Session.SessionID; %>", "/page.asp:2: "},
               {"<% Server.Execute('child.asp') %>", "/child.asp:2: "},
               {"<% Server.Transfer('child.asp') %>", "/child.asp:2: "}};
  for (const auto& row : kRows) {
    log.clear();
    EXPECT_EQ(503, run(row.page, "").head.status) << row.page;
    ASSERT_EQ(1u, log.size()) << row.page;
    EXPECT_TRUE(log[0].starts_with(row.place)) << log[0];
  }
}

TEST_F(PageSession, AnswersBusyWhenTheSessionIsHeldForTooLong) {
  options.session_patience = std::chrono::seconds(0);
  body("<% Session('a') = 1; %>");
  const zelto::SessionHold held = site().sessions().open(cookie.substr(cookie.find('=') + 1));
  EXPECT_EQ(503, run("never", cookie).head.status);
}

TEST_F(PageSession, FreesADictionaryThatHoldsItselfWithTheSession) {
  site();
  const std::int64_t before = korlib_host::live_objects();
  body(
      "<% var d = Server.CreateObject('Scripting.Dictionary'), e = Server.CreateObject('Scripting.Dictionary');"
      "d.Add('me', d); d.Add('e', e); e.Add('d', d); Session('d') = d; %>");
  EXPECT_EQ("2", body("<%= Session('d').Count %>"));
  EXPECT_EQ(before + 2, korlib_host::live_objects());
  body("<% Session.Abandon(); %>");
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST_F(PageSession, FreesADictionaryThatHoldsItselfOnceTheSessionForgetsIt) {
  site();
  const std::int64_t before = korlib_host::live_objects();
  const std::string keep =
      "<% var d = Server.CreateObject('Scripting.Dictionary'); d.Add('me', d); Session('d') = d; %>";
  for (const char* forget : {"Session('d') = 1;", "Session.Contents.Remove('d');", "Session.Contents.RemoveAll();",
                             "var d = Session('d'); Session('d') = 1; d.Add('x', d);"}) {
    body(keep);
    EXPECT_EQ(before + 1, korlib_host::live_objects());
    body("<% " + std::string(forget) + " %>");
    EXPECT_EQ(before, korlib_host::live_objects()) << forget;
  }
}

TEST_F(PageSession, FreesADictionaryThatHoldsItselfWithAPageWithoutSession) {
  site();
  const std::int64_t before = korlib_host::live_objects();
  run("<%@ EnableSessionState=False %><% var d = Server.CreateObject('Scripting.Dictionary'); d.Add('me', d); %>", "");
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST_F(PageSession, FreesADictionaryThatHoldsItselfWithAnExpiredSession) {
  site();
  const std::int64_t before = korlib_host::live_objects();
  body("<% var d = Server.CreateObject('Scripting.Dictionary'); d.Add('me', d); Session('d') = d; %>");
  EXPECT_EQ(before + 1, korlib_host::live_objects());
  site().sessions().sweep(zelto::SessionStore::Clock::now() + std::chrono::hours(24));
  EXPECT_EQ(before, korlib_host::live_objects());
}

// Two requests would count the component's references at once.
TEST_F(PageSession, LetsNoComponentOrScriptObjectIntoADictionaryOfTheApplication) {
  const std::string told = "A dictionary that the Application keeps takes plain values and dictionaries only.";
  body(
      "<% var d = Server.CreateObject('Scripting.Dictionary');"
      "d.Add('inner', Server.CreateObject('Scripting.Dictionary')); Application('d') = d; %>");
  const auto refusal = [&](const std::string& attempt, const std::string& object) {
    return body("<% var d = Application('d'), o = " + object + "; try { " + attempt +
                "; } catch (e) { Response.Write(e.message); } %>");
  };
  for (const char* object : {"Server.CreateObject('Mirt')", "{a: 1}"}) {
    EXPECT_EQ(told, refusal("d.Key('inner') = o", object));
    EXPECT_EQ(told, refusal("d.Item('c') = o", object));
    EXPECT_EQ(told, refusal("d.Item('inner').Add('c', o)", object));
    EXPECT_EQ(told, refusal("d.Add('c', [[o]])", object));
  }
  EXPECT_EQ("1 0", body("<% var d = Application('d'); Response.Write(d.Count + ' ' + d.Item('inner').Count); %>"));
}

TEST_F(PageSession, CountsSessionsRightUnderManyClients) {
  const std::string page = "<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>";
  folder.write("page.asp", page);
  site();
  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([this] {
      base::run_on_thread(zelto::kPageStack, [this] {
        zelto::script::Engine engine;
        std::string own;
        for (int i = 1; i <= 20; ++i) {
          MemorySink sink;
          zelto::run_page(site(), engine, request(own), "/page.asp", sink);
          for (const std::string& set : sink.header("Set-Cookie")) own = set.substr(0, set.find(';'));
          EXPECT_EQ(std::to_string(i), sink.body);
        }
      });
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(4u, site().sessions().size());
}

}  // namespace
