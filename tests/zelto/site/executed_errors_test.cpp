// A failure in a page that another one executes, as the author finds it: as if the two were one page.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

class ExecutedErrors : public test::PageRunFixture {
 protected:
  ExecutedErrors() { options.debug = true; }

  // Other pages may have been changed beside it.
  std::string failed(const std::string& text) {
    restart();
    return PageRunFixture::failed(text);
  }
};

TEST_F(ExecutedErrors, ShowTheirLineAndTheFunctionsOfBothPages) {
  folder.write("part.inc", "<%\nfunction broken() { return null.x; } %>");
  folder.write("child.asp", "<!--#include file=\"part.inc\"-->\n<% function go() { broken(); }\ngo(); %>");
  for (const std::string how : {"Execute", "Transfer"}) {
    const std::string shown = failed("<%\nfunction outer() { Server." + how + "('child.asp'); }\n\nouter(); %>");
    for (const char* piece :
         {"<h1>null is not an object (evaluating 'null.x')</h1>", "<dt>File</dt><dd>/part.inc</dd>\n",
          "<dt>Line</dt><dd>2</dd>\n",
          "<span class=\"here\">    2  function broken() { return null.x; } %&gt;</span>"
          "<span class=\"caret\">                                      ^</span>",
          "<ol>\n<li>broken(), /part.inc:2</li>\n<li>go(), /child.asp:2</li>\n<li>the page, /child.asp:3</li>\n"
          "<li>outer(), /page.asp:2</li>\n<li>the page, /page.asp:4</li>\n</ol>"}) {
      EXPECT_TRUE(has(shown, piece)) << how << ": " << piece << "\n" << shown;
    }
    EXPECT_EQ("/part.inc:2: null is not an object (evaluating 'null.x'); in the page /page.asp (TypeError, 0x800A138F)",
              log[0]);
  }
}

TEST_F(ExecutedErrors, ShowTheTemplatesOfBothPages) {
  folder.write("tpl/main.html", "<p>\n(#%Part#)");
  folder.write("tpl/inner.html", "\n (#;broken#)");
  const std::string controller =
      "var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
      "m.TemplateExt = '.html';";
  folder.write("child.asp", "<% " + controller + "\nfunction broken() { return null.x; }\nm.DrawTemplate('inner'); %>");
  const std::string shown = failed("<% " + controller +
                                   "\nfunction OnDraw_Part() { Server.Execute('child.asp'); }\n"
                                   "m.DrawTemplate('main'); %>");
  EXPECT_EQ(
      "/child.asp:2: null is not an object (evaluating 'null.x'); in /tpl/inner.html:2:2 (#;broken#), "
      "/tpl/main.html:2:1 (#%Part#); in the page /page.asp (TypeError, 0x800A138F)",
      log[0]);
  for (const char* piece :
       {"<dt>Template</dt><dd>/tpl/inner.html:2:2</dd>", "<h2>/tpl/inner.html</h2>\n<pre>",
        "<h2>/child.asp</h2>\n<pre>",
        "<ol>\n<li>broken(), /child.asp:2</li>\n<li><code>(#;broken#)</code>, /tpl/inner.html:2:2</li>\n"
        "<li>the page, /child.asp:3</li>\n<li>OnDraw_Part(), /page.asp:2</li>\n"
        "<li><code>(#%Part#)</code>, /tpl/main.html:2:1</li>\n<li>the page, /page.asp:3</li>\n</ol>"}) {
    EXPECT_TRUE(has(shown, piece)) << piece << "\n" << shown;
  }
}

// Of those the engine keeps no stack.
TEST_F(ExecutedErrors, ShowTheCallOfAPageThatDoesNotRunOrThrowsNoError) {
  folder.write("child.asp", "<%\nvar = 1; %>");
  std::string shown = failed("<%\n Server.Execute('child.asp'); %>");
  EXPECT_TRUE(has(shown, "<ol>\n<li>the page, /child.asp:2</li>\n<li>the page, /page.asp:2</li>\n</ol>")) << shown;
  EXPECT_TRUE(log[0].starts_with("/child.asp:2: ")) << log[0];
  folder.write("child.asp", "<%\n\nthrow 'mine'; %>");
  shown = failed("<%\n Server.Execute('child.asp'); %>");
  EXPECT_TRUE(has(shown, "<ol>\n<li>the page, /child.asp:3</li>\n<li>the page, /page.asp:2</li>\n</ol>")) << shown;
  EXPECT_EQ("/child.asp:3: mine; in the page /page.asp (Error, 0x80004005)", log[0]);
}

TEST_F(ExecutedErrors, GoThroughPagesThatExecuteEachOther) {
  folder.write("child.asp", "<% Server.Execute('grandchild.asp'); %>");
  folder.write("grandchild.asp", "<%\nthrow new Error('outer', { cause: new Error('inner') }); %>");
  const std::string shown = failed("<%\n Server.Execute('child.asp'); %>");
  EXPECT_TRUE(has(shown,
                  "<ol>\n<li>the page, /grandchild.asp:2</li>\n<li>the page, /child.asp:1</li>\n"
                  "<li>the page, /page.asp:2</li>\n</ol>"))
      << shown;
  EXPECT_EQ("/grandchild.asp:2: outer; caused by: inner; in the page /page.asp (Error, 0x80004005)", log[0]);
}

TEST_F(ExecutedErrors, StayWithAnErrorThatAScriptThrowsOn) {
  folder.write("child.asp", "<%\nnull.x; %>");
  folder.write("other.asp", "<% throw new Error('other'); %>");
  const std::string caught = "<% var e; try { Server.Execute('child.asp') } catch (c) { e = c }\n";
  failed(caught + "try { Server.Execute('other.asp') } catch (c) {} throw e; %>");
  EXPECT_TRUE(log[0].starts_with("/child.asp:2: null is not an object (")) << log[0];
  failed(caught + "throw new Error('mine', { cause: e }); %>");
  EXPECT_TRUE(log[0].starts_with("/page.asp:2: mine; caused by: null is not an object (")) << log[0];
  failed(caught + "throw new Error('mine'); %>");
  EXPECT_EQ("/page.asp:2: mine (Error, 0x80004005)", log[0]);
}

TEST_F(ExecutedErrors, KeepTheirPlaceAsTheCauseOfAnother) {
  folder.write("child.asp", "<%\n\n\nthrow new Error('real'); %>");
  const std::string shown =
      failed("<%\ntry { Server.Execute('child.asp'); } catch (e) {\n  throw new Error('wrapped', { cause: e });\n} %>");
  EXPECT_EQ("/page.asp:3: wrapped; caused by: real (/child.asp:4) (Error, 0x80004005)", log[0]);
  EXPECT_TRUE(has(shown, "<dt>Line</dt><dd>3</dd>\n")) << shown;
}

TEST_F(ExecutedErrors, ArePropertiesOfWhatAScriptCatches) {
  folder.write("child.asp", "<%\n\nnull.x; %>");
  EXPECT_EQ("/child.asp|3|null is not an object (evaluating 'null.x')|TypeError",
            body("<% try { Server.Execute('child.asp') } catch (e) {"
                 "Response.Write([e.file, e.line, e.message, e.source].join('|')) } %>"));
  folder.write("tpl/inner.html", "\n (#;none#)");
  folder.write("child.asp",
               "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');\n"
               "m.TemplateExt = '.html'; m.DrawTemplate('inner'); %>");
  restart();
  EXPECT_EQ("\n /child.asp|/tpl/inner.html|2|2|(#;none#)", body("<% try { Server.Execute('child.asp') } catch (e) {"
                                                                "Response.Write([e.file, e.template, e.line, e.column, "
                                                                "e.mark].join('|')) } %>"));
}

TEST_F(ExecutedErrors, ShowTheStatementThatFailed) {
  folder.write("child.asp",
               "<% var c = Server.CreateObject('ADODB.Connection'); c.Open('Driver=SQLite3;Database=:memory:');"
               "var q = Server.CreateObject('ADODB.Command'); q.ActiveConnection = c;"
               "q.CommandText = 'INSERT INTO nowhere VALUES (?)';"
               "q.Parameters.Append(q.CreateParameter('a', 202, 1, 50, 'Ann'));\nq.Execute(); %>");
  const std::string shown = failed("<%\n Server.Execute('child.asp'); %>");
  EXPECT_TRUE(has(shown,
                  "<h2>The statement</h2>\n<pre>INSERT INTO nowhere VALUES (?)</pre>\n"
                  "<h2>Its parameters</h2>\n<ol>\n<li>'Ann'</li>\n</ol>\n"))
      << shown;
  EXPECT_TRUE(log[0].starts_with("/child.asp:2: ")) << log[0];
}

TEST_F(ExecutedErrors, TellOfALimitWhereTheExecutedPageWas) {
  options.script_timeout = std::chrono::seconds(1);
  folder.write("child.asp", "<%\nfor (;;) Server.MapPath('x'); %>");
  const std::string shown = failed("<%\n Server.Execute('child.asp'); %>");
  EXPECT_TRUE(has(shown, "<ol>\n<li>the page, /child.asp:2</li>\n<li>the page, /page.asp:2</li>\n</ol>")) << shown;
}

}  // namespace
