// A failure in a template, as the page's author finds it: on the debug page, in the log's line, and in what a script
// catches.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace {

class TemplateErrors : public test::PageRunFixture {
 protected:
  TemplateErrors() { options.debug = true; }

  // A page of one line that draws tpl/main.html.
  static std::string page(const std::string& script = {}) {
    return "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
           "m.TemplateExt = '.html'; m.DefaultTemplate = 'main';" +
           script + " m.Process(); %>";
  }
};

TEST_F(TemplateErrors, ShowTheMarkItsPlaceAndTheLinesAroundIt) {
  folder.write("tpl/main.html", "<h1>Title</h1>\n\t<b>(#;user|<name>#)</b>\nlast\n");
  const std::string shown = failed(page("var user = {};"));
  for (const char* piece :
       {"<dt>Template</dt><dd>/tpl/main.html:2:5</dd>",
        "<dt>Mark</dt><dd><code>(#;user|&lt;name&gt;#): 'user' has no '&lt;name&gt;'</code></dd>",
        "<h2>/tpl/main.html</h2>\n<pre>    1  &lt;h1&gt;Title&lt;/h1&gt;\n<span class=\"here\">    2  \t"
        "&lt;b&gt;(#;user|&lt;name&gt;#)&lt;/b&gt;</span><span class=\"caret\">       \t   ^</span>    3  last\n</pre>",
        "<dt>File</dt><dd>/page.asp</dd>", "<h2>/page.asp</h2>\n<pre>",
        "<h2>Marks and calls, the last one first</h2>\n<ol>\n<li><code>(#;user|&lt;name&gt;#): 'user' has no "
        "'&lt;name&gt;'</code>, "
        "/tpl/main.html:2:5</li>\n<li>the page, /page.asp:1</li>\n</ol>"}) {
    EXPECT_TRUE(has(shown, piece)) << piece << "\n" << shown;
  }
}

// The words before the places are those of always.
TEST_F(TemplateErrors, AreOneLineOfTheLog) {
  options.debug = false;
  folder.write("tpl/main.html", "first\n(#;title#)");
  failed(page());
  EXPECT_EQ("/page.asp:1: Unknown name.[(#;title#)]; in /tpl/main.html:2:1 (#;title#) (Mirt, 0x80020006)", log[0]);
  folder.write("tpl/main.html", "(#%Rows|\n<li>\x1b[2J#)");
  restart();
  failed(page());
  EXPECT_EQ(
      "/page.asp:1: Event 'OnDraw_Rows' not found.; in /tpl/main.html:1:1 (#%Rows| <li> [2J#) "
      "(Mirt, 0x80004005)",
      log[0]);
}

TEST_F(TemplateErrors, TellOfEachKindOfFailure) {
  const struct {
    const char* mark;
    const char* words;
    const char* reason = "";
  } kRows[] = {
      {"(#;title#)", "Unknown name.[(#;title#)]"},
      {"(#%Nobody|a#|#b#)", "Event 'OnDraw_Nobody' not found."},
      {"(#;nothing#)", "Type mismatch.[(#;nothing#)]"},
      {"(#;towns|7#)", "Invalid index.[(#;towns#)]", ": 'towns' has no element '7'"},
      {"(#;towns|x#)", "Type mismatch.[(#;towns#)]", ": 'towns' is an array, and has no 'x'"},
      {"(#;towns|0#|#zip#)", "Type mismatch.[(#;towns#)]", ": 'towns.0' is no object, and has no 'zip'"},
      {"(#;user|name#|#zip#)", "Unknown name.[(#;user#)]", ": 'user.name' has no 'zip'"},
      {"(#;user|name|zip#)", "Unknown name.[(#;user#)]", ": 'user' has no 'name|zip' (parameters are parted by #|#)"},
      {"(#|item#)", "Could not get Bag. Please specify property 'Name'."},
      {"(#%_Input|one#)", "Invalid OnDraw__Input param length."},
      {"(#`nowhere#)", "Template file can't read.["},
      {"(#`..\\..\\secret#)", "Template file can't obtain.["},
  };
  for (const auto& row : kRows) {
    folder.write("tpl/main.html", "\n " + std::string(row.mark) + "\n");
    restart();
    const std::string shown = failed(page("var nothing = null, towns = ['Rome'], user = { name: {} };"));
    EXPECT_TRUE(has(shown, "<dt>Template</dt><dd>/tpl/main.html:2:2</dd>\n<dt>Mark</dt><dd><code>" +
                               std::string(row.mark) + row.reason + "</code>"))
        << shown;
    EXPECT_TRUE(has(shown, "<span class=\"caret\">        ^</span>")) << shown;
    EXPECT_TRUE(has(log[0], std::string("; in /tpl/main.html:2:2 ") + row.mark + row.reason + " (")) << log[0];
    EXPECT_TRUE(log[0].starts_with(std::string("/page.asp:1: ") + row.words)) << log[0];
  }
}

TEST_F(TemplateErrors, SayWhereAMarkWasOpened) {
  folder.write("tpl/main.html", "<p>\n<b>(#;title</b>\n</p>");
  for (const char* cached : {"true", "false"}) {
    const std::string shown = failed(page(std::string("m.CacheTemplate = ") + cached + ";"));
    EXPECT_EQ(
        "/page.asp:1: Invalid mark order.; in /tpl/main.html:2:4 (#;title</b>: opened here, never closed "
        "(Templator, 0x80004005)",
        log[0]);
    EXPECT_TRUE(has(shown, "<code>(#;title&lt;/b&gt;: opened here, never closed</code>")) << shown;
    EXPECT_TRUE(has(shown, "<span class=\"caret\">          ^</span>")) << shown;
  }
}

// In the character set that the page has named, so that the caret stands under the mark.
TEST_F(TemplateErrors, ShowATemplateInItsCharacterSet) {
  const struct {
    const char* charset;
    std::string bytes;
    const char* shown;
  } kRows[] = {
      {"windows-1251", "\xCF\xF0\xE8 (#;title#)",
       "    1  При (#;title#)</span><span class=\"caret\">           ^</span>"},
      {"ISO-8859-1", "\xE9t\xE9 (#;title#)", "    1  été (#;title#)</span><span class=\"caret\">           ^</span>"},
      {"UTF-16LE", std::string("\xE9\0(\0#\0;\0x\0#\0)\0", 14),
       "    1  é(#;x#)</span><span class=\"caret\">        ^</span>"},
      {"UTF-8", "é(#;x#)", "    1  é(#;x#)</span><span class=\"caret\">        ^</span>"},
  };
  for (const auto& row : kRows) {
    folder.write("tpl/main.html", row.bytes);
    restart();
    const std::string shown = failed(page(std::string("m.TemplateCharset = '") + row.charset + "';"));
    EXPECT_TRUE(has(shown, row.shown)) << row.charset << shown;
  }
}

// As zelto check names it.
TEST_F(TemplateErrors, SayWhichMarkWithinAnotherIsNotClosed) {
  folder.write("tpl/main.html", "(#%Rows|\n<li>(#;cell</li>\n#)\n");
  const std::string shown = failed(page());
  EXPECT_TRUE(has(log[0], "; in /tpl/main.html:2:5 (#;cell</li>: opened here, never closed (")) << log[0];
  EXPECT_TRUE(has(shown, "<dt>Template</dt><dd>/tpl/main.html:2:5</dd>")) << shown;
}

TEST_F(TemplateErrors, NameTheTemplatesThatDrawEachOtherCachedAndNot) {
  folder.write("tpl/main.html", "<body>\n(#@side#)");
  folder.write("tpl/parts/list.html", "(#`row#)");
  folder.write("tpl/parts/row.html", "<li>\n<b>(#:town#)</b>");
  const std::string script = "function On_StartDraw(m) { m.Include('side') = 'parts\\\\list'; }";
  for (const char* cached : {"false", "true", "true"}) {
    const std::string shown = failed(page(script + "m.CacheTemplate = " + cached + ";"));
    EXPECT_TRUE(has(log[0],
                    "; in /tpl/parts/row.html:2:4 (#:town#), /tpl/parts/list.html:1:1 (#`row#), "
                    "/tpl/main.html:2:1 (#@side#) ("))
        << log[0];
    EXPECT_TRUE(has(shown,
                    "<li><code>(#:town#)</code>, /tpl/parts/row.html:2:4</li>\n"
                    "<li><code>(#`row#)</code>, /tpl/parts/list.html:1:1</li>\n"
                    "<li><code>(#@side#)</code>, /tpl/main.html:2:1</li>\n<li>the page, /page.asp:1</li>\n"))
        << shown;
    EXPECT_TRUE(has(shown, "<h2>/tpl/parts/row.html</h2>\n<pre>")) << shown;
  }
}

// Each mark stands where it was drawn: outside of the functions that it called.
TEST_F(TemplateErrors, StandAmongTheFunctionsThatWereRunning) {
  folder.write("tpl/main.html", "(#%Rows|<li>(#;cell#)</li>#)");
  const std::string shown =
      failed(page("function cell() { return broken(); }\nfunction broken() { return null.x; }\n"
                  "function OnDraw_Rows(m, texts) { m.ProcessTemplate(texts[0]); }"));
  EXPECT_TRUE(has(shown,
                  "<ol>\n<li>broken(), /page.asp:2</li>\n<li>cell(), /page.asp:1</li>\n"
                  "<li><code>(#;cell#)</code>, (text):1:5</li>\n<li>OnDraw_Rows(), /page.asp:3</li>\n"
                  "<li><code>(#%Rows|&lt;li&gt;(#;cell#)&lt;/li&gt;#)</code>, /tpl/main.html:1:1</li>\n"
                  "<li>the page, /page.asp:3</li>\n</ol>"))
      << shown;
  EXPECT_TRUE(log[0].starts_with("/page.asp:2: ")) << log[0];
  EXPECT_TRUE(has(log[0], "; in (text):1:5 (#;cell#), /tpl/main.html:1:1 (#%Rows|<li>(#;cell#)</li>#) (")) << log[0];
  EXPECT_TRUE(has(shown, "<h2>/tpl/main.html</h2>\n<pre>")) << "of a text there are no lines";
}

TEST_F(TemplateErrors, AreToldOfChildAndStandAloneTemplators) {
  folder.write("tpl/child.html", "a\n (#:nothing#)");
  const std::string shown =
      failed(page("function On_StartDraw(m) { var c = m.NewTemplator('Draw_'); c.Script = globalThis;"
                  "c.ProcessTemplateFile(Server.MapPath('tpl/child.html'), 'UTF-8'); }"));
  EXPECT_TRUE(has(log[0], "; in /tpl/child.html:2:2 (#:nothing#) (")) << log[0];
  EXPECT_TRUE(has(shown, "<dt>Template</dt><dd>/tpl/child.html:2:2</dd>")) << shown;
  failed(
      "<% var t = Server.CreateObject('Mirt.TextTemplator'); t.Script = this; t.ProcessTemplate('x(#nothing#)'); %>");
  EXPECT_EQ(
      "/page.asp:1: The script does not declare 'nothing': 'ProcessTemplate' (0x80020003); in (text):1:2 (#nothing#): "
      "no script of the templator has it (Error)",
      log[0]);
  failed("<% var t = Server.CreateObject('Mirt.TextTemplator'); t.ProcessTemplate('x(#nothing#)'); %>");
  EXPECT_TRUE(has(log[0], "; in (text):1:2 (#nothing#): the templator has no Script (")) << log[0];
  failed(page("var c = m.NewTemplator(''); c.ProcessTemplate('(#&item#)');"));
  EXPECT_TRUE(
      has(log[0], "; in (text):1:1 (#&item#): the page that has made the templator has no Name, and so no bag ("))
      << log[0];
  failed(
      "<% var t = Server.CreateObject('Mirt.TextTemplator'); t.Script = this;"
      "t.ProcessTemplateFile(Server.MapPath('tpl/child.html'), 'UTF-8'); %>");
  EXPECT_TRUE(has(log[0], "; in /tpl/child.html:2:2 (#:nothing#): no script ")) << log[0];
}

TEST_F(TemplateErrors, ArePropertiesOfWhatAScriptCatches) {
  folder.write("tpl/main.html", "\n  (#;title|a#)");
  EXPECT_EQ("\n  /tpl/main.html|2|3|(#;title|a#)|/tpl/main.html:2:3: (#;title|a#)|",
            body("<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
                 "m.TemplateExt = '.html';"
                 "try { m.DrawTemplate('main'); } catch (e) {"
                 "Response.Write([e.template, e.line, e.column, e.mark, e.templates].join('|') + '|');"
                 "for (var name in e) Response.Write(name); } %>"));
  EXPECT_EQ("undefined undefined", body("<% try { Server.CreateObject('None') } catch (e) {"
                                        "Response.Write(typeof e.template + ' ' + typeof e.templates) } %>"));
}

TEST_F(TemplateErrors, StayWithAnErrorThatAScriptThrowsOn) {
  folder.write("tpl/main.html", "(#%Part#)");
  folder.write("tpl/part.html", "(#;title#)");
  const std::string places = "; in /tpl/part.html:1:1 (#;title#), /tpl/main.html:1:1 (#%Part#) (";
  for (const char* how : {"throw e", "throw new Error('outer', { cause: e })"}) {
    const std::string shown = failed(
        page(std::string("function OnDraw_Part(m) { try { m.DrawTemplate('part') } catch (e) { ") + how + " } }"));
    EXPECT_TRUE(has(log[0], places)) << how << log[0];
    EXPECT_TRUE(has(shown, "<dt>Template</dt><dd>/tpl/part.html:1:1</dd>")) << how;
  }
  failed(page("function OnDraw_Part(m) { try { m.DrawTemplate('part') } catch (e) { throw new Error('mine') } }"));
  EXPECT_TRUE(has(log[0], ": mine; in /tpl/main.html:1:1 (#%Part#) (")) << log[0];
}

TEST_F(TemplateErrors, AreOverWhenAScriptGoesOn) {
  folder.write("tpl/main.html", "(#;title#)");
  failed(
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
      "m.TemplateExt = '.html'; try { m.DrawTemplate('main') } catch (e) {} m.Redirekt('x'); %>");
  EXPECT_FALSE(has(log[0], "main.html")) << log[0];
}

TEST_F(TemplateErrors, NameATemplateThatDrawsItself) {
  folder.write("tpl/main.html", "\n (#`main#)");
  const std::string shown = failed(page());
  EXPECT_TRUE(has(log[0], "; in /tpl/main.html:2:2 (#`main#), ")) << log[0];
  EXPECT_TRUE(has(shown, "<dt>Template</dt><dd>/tpl/main.html:2:2</dd>")) << shown;
}

// What a page draws when it comes to its limit has nothing to do with it, or everything.
TEST_F(TemplateErrors, TellWhatWasDrawnWhenAPageCameToItsLimit) {
  options.script_timeout = std::chrono::seconds(1);
  options.script_memory = std::size_t{48} << 20;
  folder.write("tpl/main.html", "<p>\n(#`part#)");
  folder.write("tpl/part.html", " (#%Rows|<li>(#;cell#)</li>#)");
  for (const std::string endless :
       {"for (;;);", "for (;;) Server.MapPath('x');", "var a = []; for (;;) a.push('text' + a.length);",
        "try { for (;;) Server.MapPath('x'); } catch (e) { Server.MapPath('x'); }"}) {
    const std::string shown = failed(
        page("function cell() { " + endless + " }\nfunction OnDraw_Rows(m, texts) { m.ProcessTemplate(texts[0]); }\n"));
    EXPECT_TRUE(has(log[0],
                    "; in (text):1:5 (#;cell#), /tpl/part.html:1:2 (#%Rows|<li>(#;cell#)</li>#), "
                    "/tpl/main.html:2:1 (#`part#) (Server, "))
        << log[0];
    EXPECT_TRUE(has(shown,
                    "<ol>\n<li>cell(), /page.asp:1</li>\n<li><code>(#;cell#)</code>, (text):1:5</li>\n"
                    "<li>OnDraw_Rows(), /page.asp:2</li>\n"
                    "<li><code>(#%Rows|&lt;li&gt;(#;cell#)&lt;/li&gt;#)</code>, /tpl/part.html:1:2</li>\n"
                    "<li><code>(#`part#)</code>, /tpl/main.html:2:1</li>\n<li>the page, /page.asp:3</li>\n</ol>"))
        << endless << shown;
    EXPECT_TRUE(has(shown, "<h2>/tpl/part.html</h2>\n<pre>")) << shown;
  }
}

// One that comes to it somewhere else had drawn all that it had.
TEST_F(TemplateErrors, TellOfNoTemplateThatIsNotBeingDrawnAtTheLimit) {
  options.script_timeout = std::chrono::seconds(1);
  folder.write("tpl/main.html", "(#;nothing#)");
  failed(page("try { m.DrawTemplate('main') } catch (e) {} for (;;) Server.MapPath('x');"));
  EXPECT_FALSE(has(log[0], "main.html")) << log[0];
}

// As many as there are, of marks and of functions.
TEST_F(TemplateErrors, SayHowManyAreNotListed) {
  folder.write("tpl/main.html", "(#%Part#)");
  folder.write("tpl/part.html", "(#;title#)");
  const std::string script =
      "var depth = 0;\nfunction OnDraw_Part(m) { m.DrawTemplate(++depth < 25 ? 'main' : 'part') }\n";
  std::string shown = failed(page(script));
  EXPECT_TRUE(has(log[0], " and 18 more (")) << log[0];  // 25 and part.html, of which the line has 8
  EXPECT_TRUE(has(shown, "</ol>\n<p>and 10 more marks</p>\n")) << shown;
  shown = failed("<% function f(n) { if (n == 0) null.x; f(n - 1) }\nf(39); %>");
  EXPECT_TRUE(has(shown, "<li>f(), /page.asp:1</li>\n</ol>\n<p>and 9 more calls</p>\n")) << shown;
  shown = failed("<% function f(n) { if (n == 0) null.x; f(n - 1) }\nf(200); %>");
  EXPECT_TRUE(has(shown, "<p>and at least 68 more calls</p>\n")) << shown;
}

TEST_F(TemplateErrors, AreNotShownToVisitors) {
  options.debug = false;
  folder.write("tpl/main.html", "(#;title#)");
  EXPECT_FALSE(has(failed(page()), "main.html"));
}

}  // namespace
