// Marks that show nothing by mistake, as the author is told of them: in the log, and at the foot of an error's page.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class TemplateSlips : public test::PageRunFixture {
 protected:
  TemplateSlips() { options.debug = true; }

  // What a page answers that draws the template, with that script before it.
  std::string drawn(const std::string& text, const std::string& script = {}) {
    folder.write("tpl/main.html", text);
    log.clear();
    restart();
    return body(
        "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
        "m.TemplateExt = '.html'; m.DefaultTemplate = 'main'; m.Name = 'app';" +
        script + " m.Process(); %>");
  }
};

TEST_F(TemplateSlips, AreMarksWithoutAType) {
  EXPECT_EQ("\n .", drawn("\n (#title#)."));
  EXPECT_EQ(Lines{"/page.asp: warning: /tpl/main.html:2:2: (#title#) has no type character"}, log);
  drawn("(# a note #)(##)(#\tanother#)");
  EXPECT_EQ(Lines{}, log);
}

TEST_F(TemplateSlips, AreItemsThatViewAndIncludeDoNotHave) {
  drawn("(#*titel#)\n(#/rows#)(#@sied#)(#*there#)",
        "function On_StartDraw(m) { m.SetView('title', 'T'); m.SetView('there', 'x'); m.Include('side') = 'part'; }");
  EXPECT_EQ(Lines{"/page.asp: warning: /tpl/main.html:1:1: (#*titel#) shows nothing: View has no 'titel', did you mean "
                  "'title'?; /tpl/main.html:2:1: (#/rows#) shows nothing: View has no 'rows'; "
                  "/tpl/main.html:2:10: (#@sied#) shows nothing: Include has no 'sied', did you mean 'side'?"},
            log);
}

TEST_F(TemplateSlips, AreObjectsThatAreShownAsText) {
  EXPECT_EQ("[object Object] [object Object] at hand 1",
            drawn("(#*user#) (#;one#) (#*told#) (#*rows#)",
                  "var one = {}; function On_StartDraw(m) { m.SetView('user', { a: 1 });"
                  "m.SetView('told', { toString: function () { return 'at hand'; } }); m.SetView('rows', 1); }"));
  EXPECT_EQ(Lines{"/page.asp: warning: /tpl/main.html:1:1: (#*user#) shows an object as text: '[object Object]'; "
                  "/tpl/main.html:1:11: (#;one#) shows an object as text: '[object Object]'"},
            log);
}

// Others are optional as often as not.
TEST_F(TemplateSlips, AreValuesOfNearlyTheNameOfAnother) {
  const std::string script =
      "Session('visits') = 3; Application('site') = 'Books';"
      "function On_StartDraw(m) { m.Bag('name') = 'Bo'; }";
  drawn("(#=visist#)(#+siet#)(#&naem#)", script);
  EXPECT_EQ(
      Lines{"/page.asp: warning: /tpl/main.html:1:1: (#=visist#) shows nothing: the session has no 'visist', did "
            "you mean 'visits'?; /tpl/main.html:1:12: (#+siet#) shows nothing: the application has no 'siet', did "
            "you mean 'site'?; /tpl/main.html:1:21: (#&naem#) shows nothing: the bag has no 'naem', did you mean "
            "'name'?"},
      log);
  drawn("(#=unrelated#)(#+unrelated#)(#&unrelated#)(#$unrelated#)", script);
  EXPECT_EQ(Lines{}, log);
}

TEST_F(TemplateSlips, AreToldOnceAPage) {
  drawn("(#%Rows|(#*nmae#)#)(#%Rows|(#*nmae#)#)",
        "function OnDraw_Rows(m, texts) { m.ProcessTemplate(texts[0]); m.ProcessTemplate(texts[0]); }");
  EXPECT_EQ(Lines{"/page.asp: warning: (text):1:1: (#*nmae#) shows nothing: View has no 'nmae'"}, log);
  std::string many;
  for (int i = 0; i < 30; ++i) many += "(#x" + std::to_string(i) + "#)";
  drawn(many);
  ASSERT_EQ(1u, log.size());
  EXPECT_TRUE(log[0].ends_with("(#x19#) has no type character and 10 more")) << log[0];
  // Those that come again are no more.
  drawn("(#%Rows#)", "var many = '" + many +
                         "(#=unrelated#)'; function OnDraw_Rows(m) { m.ProcessTemplate(many);"
                         "m.ProcessTemplate(many); m.ProcessTemplate(many); }");
  ASSERT_EQ(1u, log.size());
  EXPECT_TRUE(log[0].ends_with("(#x19#) has no type character and 10 more")) << log[0];
}

// What fails is told so.
TEST_F(TemplateSlips, AreNotMarksThatFail) {
  const std::string shown = drawn("(#*none|way#)");
  EXPECT_TRUE(has(shown, "<dt>Mark</dt><dd><code>(#*none|way#): 'none' is no object, and has no 'way'</code>"))
      << shown;
  EXPECT_FALSE(has(shown, "shows nothing")) << shown;
  ASSERT_EQ(1u, log.size());
  EXPECT_EQ(std::string::npos, log[0].find("warning")) << log[0];
}

// The component does not refuse them.
TEST_F(TemplateSlips, AreArgumentsThatNobodyLooksAt) {
  EXPECT_EQ("ab", drawn("",
                        "\n\nm.Write('ab', false, 1, 2);"
                        "function On_StartDraw(m) { m.ToCommand('x', 1); m.MakeGUID(true); }"
                        "\nfor (var i = 0; i < 3; i++) Server.CreateObject('Mirt.Utility').Trim('x', 'y', 'z');"));
  EXPECT_EQ(Lines{"/page.asp: warning: /page.asp:3: 'Write' takes 2 arguments, not 4; /page.asp:4: 'Trim' takes 1 "
                  "argument, not 3; /page.asp:3: 'ToCommand' takes 1 argument, not 2"},
            log);
  options.debug = false;
  EXPECT_EQ("ab", drawn("", "m.Write('ab', false, 1, 2);"));
  EXPECT_EQ(Lines{}, log);
}

TEST_F(TemplateSlips, AskForNoShortNameButInOtherLetterCase) {
  drawn("(#*a#)\n(#*id#)", "function On_StartDraw(m) { m.SetView('b', 1); m.SetView('ID', 1); }");
  EXPECT_EQ(Lines{"/page.asp: warning: /tpl/main.html:1:1: (#*a#) shows nothing: View has no 'a'; "
                  "/tpl/main.html:2:1: (#*id#) shows nothing: View has no 'id', did you mean 'ID'?"},
            log);
}

// A dictionary gets a name by being asked for it.
TEST_F(TemplateSlips, AreNotTakenForTheNameThatWasMeant) {
  drawn("(#*titel#)(#*title#)");
  EXPECT_EQ(Lines{"/page.asp: warning: /tpl/main.html:1:1: (#*titel#) shows nothing: View has no 'titel'; "
                  "/tpl/main.html:1:11: (#*title#) shows nothing: View has no 'title'"},
            log);
}

TEST_F(TemplateSlips, AreNotLookedForWhereTheSiteShowsNoErrors) {
  options.debug = false;
  EXPECT_EQ(".", drawn("(#title#)(#*rows#)."));
  EXPECT_EQ(Lines{}, log);
}

TEST_F(TemplateSlips, StandAtTheFootOfAnErrorsPageWithItsConsoleTemplatesTimesAndSession) {
  folder.write("tpl/part.html", "part");
  const std::string shown = drawn("(#title<b#)(#`part#)(#`part#)(#;nothing#)",
                                  "Session('visits') = 3; Session('list') = [1]; console.warn('<late>');");
  for (const char* piece :
       {"<h2>Warnings</h2>\n<ul>\n<li>/tpl/main.html:1:1: (#title&lt;b#) has no type character</li>\n</ul>",
        "<h2>Console</h2>\n<ul>\n<li>/page.asp:1: console.warn: &lt;late&gt;</li>\n</ul>",
        "<h2>Templates</h2>\n<ul>\n<li>/tpl/main.html</li>\n<li>/tpl/part.html, 2 times</li>\n</ul>",
        "<h2>Time</h2>\n<ul>\n<li>", "<h2>Session</h2>\n<ul>\n<li>visits: 3</li>\n<li>list: an array</li>\n"}) {
    EXPECT_TRUE(has(shown, piece)) << piece << "\n" << shown;
  }
  EXPECT_LT(shown.find("Marks and calls"), shown.find("<h2>Warnings</h2>"));
  EXPECT_EQ(3u, log.size());
}

TEST_F(TemplateSlips, StandWithTheStatementsOfAnErrorsPage) {
  const std::string script =
      "var c = Server.CreateObject('ADODB.Connection'); c.Open('Driver=SQLite3;Database=:memory:');"
      "c.Execute('CREATE TABLE t (a INT)'); c.Execute('SELECT a FROM t WHERE a < 5');";
  const std::string shown = drawn("(#;nothing#)", script);
  EXPECT_TRUE(has(shown, "<h2>Statements</h2>\n<ul>\n<li><code>CREATE TABLE t (a INT)</code>, ")) << shown;
  EXPECT_TRUE(has(shown, "<li><code>SELECT a FROM t WHERE a &lt; 5</code>, ")) << shown;
  options.debug = false;
  EXPECT_FALSE(has(drawn("(#;nothing#)", script), "CREATE TABLE"));
}

TEST_F(TemplateSlips, StandAtTheFootOfEveryHtmlPageWhereTheSiteWantsThat) {
  const std::string bag = "function On_StartDraw(m) { m.Bag('visits') = 3; m.Bag('name') = 'A<n'; }";
  const std::string foot =
      "<h2>Warnings</h2>\n<ul>\n<li>/tpl/main.html:1:7: (#title#) has no type character</li>\n</ul>";
  EXPECT_EQ("<html></html>", drawn("<html>(#title#)</html>", bag));
  options.debug_panel = true;
  const std::string shown = drawn("<html>(#title#)</html>", bag);
  EXPECT_TRUE(shown.starts_with("<html></html>\n<section id=\"zelto-debug\"")) << shown;
  EXPECT_TRUE(has(shown, foot)) << shown;
  EXPECT_TRUE(has(shown, "<h2>Bags</h2>\n<ul>\n<li>app: {visits: 3, name: A&lt;n}</li>\n</ul>")) << shown;
  EXPECT_EQ(".", drawn(".", "Response.ContentType = 'text/plain';"));
  EXPECT_FALSE(has(drawn("", "Response.Redirect('/');"), "zelto-debug"));
  options.debug = false;
  EXPECT_EQ("<html></html>", drawn("<html>(#title#)</html>"));
}

TEST_F(TemplateSlips, StandInTheCodePageOfThePage) {
  options.debug_panel = true;
  const std::string shown = drawn("(#title#)", "Response.CodePage = 1251; Session('name') = '\u041F\u00E9';");
  EXPECT_TRUE(has(shown, "<li>name: \xCF&#233;</li>")) << shown;
  const std::string failed =
      drawn("(#;nothing#)", "Response.CodePage = 1251; Session('name') = '\u041F'; Response.Flush();");
  EXPECT_TRUE(has(failed, "<li>name: \xCF</li>")) << failed;
}

TEST_F(TemplateSlips, StandAfterTheStatementThatFailed) {
  const std::string script =
      "var c = Server.CreateObject('ADODB.Connection'); c.Open('Driver=SQLite3;Database=:memory:');"
      "var q = Server.CreateObject('ADODB.Command'); q.ActiveConnection = c;"
      "q.CommandText = 'INSERT INTO <nowhere> VALUES (?)';"
      "q.Parameters.Append(q.CreateParameter('a', 202, 1, 50, 'O<ne'));";
  const std::string shown = drawn("", script + "q.Execute();");
  EXPECT_TRUE(has(shown,
                  "<h2>The statement</h2>\n<pre>INSERT INTO &lt;nowhere&gt; VALUES (?)</pre>\n"
                  "<h2>Its parameters</h2>\n<ol>\n<li>'O&lt;ne'</li>\n</ol>\n"))
      << shown;
  EXPECT_TRUE(has(drawn("", script + "try { q.Execute() } catch (e) { throw new Error('not saved', { cause: e }) }"),
                  "<pre>INSERT INTO &lt;nowhere&gt; VALUES (?)</pre>"));
  // It is not shown with another error than its own.
  EXPECT_FALSE(has(drawn("", script + "try { q.Execute() } catch (e) {} throw new Error('other')"), "The statement"));
  options.debug = false;
  EXPECT_FALSE(has(drawn("", script + "q.Execute();"), "nowhere"));
}

TEST_F(TemplateSlips, LeaveTheAnswerOfAPageAsItIs) { EXPECT_FALSE(has(drawn("<html>(#title#)</html>"), "Warnings")); }

}  // namespace
