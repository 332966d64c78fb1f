// What a script throws, as the page's author finds it on the debug page and in the log's line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;

class ScriptErrors : public test::PageRunFixture {
 protected:
  ScriptErrors() { options.debug = true; }

  // The one line of the log; the answer is in `shown`.
  std::string told(const std::string& page) {
    log.clear();
    const MemorySink sink = run(page, "");
    EXPECT_EQ(500, sink.head.status) << page;
    shown = sink.body;
    return log.size() == 1 ? log[0] : std::to_string(log.size()) + " lines";
  }
  std::string shown;
};

TEST_F(ScriptErrors, ThatAreNoneHaveTheirWordsAndPlace) {
  constexpr struct {
    const char* thrown;
    const char* words;
  } kRows[] = {
      {"{ code: 5 }", "The script threw {\"code\":5}."},
      {"null", "The script threw null."},
      {"undefined", "The script threw undefined."},
      {"Symbol('x')", "The script threw Symbol(x)."},
      {"Symbol()", "The script threw Symbol()."},
      {"42", "The script threw 42."},
      {"''", "The script threw an empty text."},
      {"'text'", "text"},
      {"new (class Fault { constructor() { this.code = 5 } })", "The script threw Fault {\"code\":5}."},
      {"[1, 2]", "The script threw [1,2]."},
      {"/re/g", "The script threw /re/g."},
      {"function named() {}", "The script threw the function named."},
      {"() => 1", "The script threw a function."},
      {"{ toString() { return 'its own' } }", "The script threw its own."},
      {"new Map", "The script threw Map {}."},
      {"{ source: 's', name: 'n' }", "The script threw {\"source\":\"s\",\"name\":\"n\"}."},
      {"Server", "The script threw an object."},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(std::string("/page.asp:3: ") + row.words + " (0x80004005)",
              told(std::string("<%\nfunction f() {\n  throw ") + row.thrown + "\n}\nf() %>"))
        << row.thrown;
    EXPECT_TRUE(has(shown, "<span class=\"here\">    3    throw ")) << shown;
  }
  EXPECT_EQ("/page.asp:3: The script threw an error without a message: Fault. (Fault, 0x80004005)",
            told("<%\nclass Fault extends Error { get name() { return 'Fault' } }\nthrow new Fault %>"));
}

// A component that has called the function knows a text only.
TEST_F(ScriptErrors, ThatAreNoneKeepBothThroughAComponent) {
  EXPECT_EQ("/page.asp:4: The script threw {\"code\":5}.; in (text):1:1 (#%a#) (Error, 0x80004005)",
            told("<% var m = Server.CreateObject('Mirt'); m.Script = this;\nm.ProcessTemplate('(#%a#)');\n"
                 "function OnDraw_a() {\n  throw { code: 5 } } %>"));
}

TEST_F(ScriptErrors, OfPromisesHaveAPlaceOrAtLeastAPage) {
  constexpr struct {
    const char* page;
    const char* line;
  } kRows[] = {
      {"<%\nasync function f() {\n await null;\n throw { code: 5 } }\nf() %>",
       "/page.asp:4: A promise was rejected, and nothing handles that: {\"code\":5}. (0x80004005)"},
      {"<% Promise.reject({ code: 5 }) %>",
       "/page.asp: A promise was rejected, and nothing handles that: {\"code\":5}. (0x80004005)"},
      {"<% Promise.reject() %>",
       "/page.asp: A promise was rejected, and nothing handles that: undefined. (0x80004005)"},
      // The place of another one would mislead.
      {"<% try { throw 5 } catch (e) {}\nPromise.reject(6) %>",
       "/page.asp: A promise was rejected, and nothing handles that: 6. (0x80004005)"},
      {"<%\nPromise.reject(new TypeError('why')) %>", "/page.asp:2: why (TypeError, 0x80004005)"},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.line, told(row.page));
}

// They were told by the line of what stood in front, a loop for example.
TEST_F(ScriptErrors, OfWhatCannotBeTakenApartOrSpreadOrSetHaveTheirLine) {
  constexpr struct {
    const char* page;
    const char* line;
  } kRows[] = {
      {"<%\nfor (var i = 0; i < 3; i++) {}\nvar [q] = null %>",
       "/page.asp:3: null is not an object (TypeError, 0x800A138F)"},
      {"<% function f(n) {\nn + 1;\n\nlet { q } = n }\nf(null) %>",
       "/page.asp:4: Right side of assignment cannot be destructured (TypeError, 0x80004005)"},
      {"<% function f(n) {\nwhile (n) {}\nvar q;\n({ q } = n) }\nf(null) %>",
       "/page.asp:4: Right side of assignment cannot be destructured (TypeError, 0x80004005)"},
      {"<% function f(n) {\nn + 1;\nconst q = 1;\nq = 2 }\nf(1) %>",
       "/page.asp:4: Attempted to assign to readonly property. (TypeError, 0x800A1390)"},
      {"<% function f(n) {\nn + 1;\n\nvar q = [...n] }\nf(5) %>",
       "/page.asp:4: Spread syntax requires ...iterable[Symbol.iterator] to be a function (TypeError, 0x80004005)"},
      {"<% function f(n, g) {\nn + 1;\n\ng(1,\n...n) }\nf(5, f) %>",
       "/page.asp:5: Spread syntax requires ...iterable[Symbol.iterator] to be a function (TypeError, 0x80004005)"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.line, told(row.page));
    EXPECT_FALSE(has(shown, "$zelto")) << shown;
  }
}

TEST_F(ScriptErrors, TellWhereEachCauseArose) {
  EXPECT_EQ("/page.asp:5: outer; caused by: deep (/page.asp:2) (Error, 0x80004005)",
            told("<%\nfunction a() { throw new Error('deep') }\nfunction b() {\n try { a() } catch (e) {\n"
                 "  throw new Error('outer', { cause: e })\n} }\nb() %>"));
  for (const char* piece :
       {"<dt>Cause</dt><dd>deep (/page.asp:2)</dd>", "<dt>Line</dt><dd>5</dd>",
        "<h2>Calls, the last one first</h2>\n<ol>\n<li>b(), /page.asp:5</li>\n<li>the page, /page.asp:7</li>\n</ol>",
        "<h2>Caused by: deep</h2>\n<p>/page.asp:2:",
        "<ol>\n<li>a(), /page.asp:2</li>\n<li>b(), /page.asp:4</li>\n<li>the page, /page.asp:7</li>\n</ol>"})
    EXPECT_TRUE(has(shown, piece)) << piece << shown;
}

TEST_F(ScriptErrors, ShowTheLinesOfACauseThatIsFarAway) {
  folder.write("far.inc", "<%\n\n\nfunction far() { null.x }\n%>");
  EXPECT_TRUE(has(told("<!--#include file=\"far.inc\"--><%\n"
                       "try { far() } catch (e) { throw new Error('near', { cause: e }) } %>"),
                  "/page.asp:2: near; caused by: null is not an object (evaluating 'null.x') (/far.inc:4) ("))
      << log[0];
  EXPECT_TRUE(has(shown, "<span class=\"here\">    4  function far() { null.x }</span>")) << shown;
}

TEST_F(ScriptErrors, TellOfEachErrorThatOneStandsFor) {
  EXPECT_EQ(
      "/page.asp:2: many; one of them: a; one of them: b (/page.asp:3); one of them: The script threw 5. "
      "(AggregateError, 0x80004005)",
      told("<%\nthrow new AggregateError([new Error('a'),\nnew TypeError('b'), 5], 'many') %>"));
  EXPECT_TRUE(has(shown, "<dt>Part</dt><dd>b (/page.asp:3)</dd>")) << shown;
  EXPECT_TRUE(has(told("<%\nPromise.any([Promise.reject(new Error('x'))]) %>"), "one of them: x (/page.asp:2) ("))
      << log[0];
  EXPECT_TRUE(has(told("<% throw new AggregateError(Array.from({ length: 30 }, (_, i) => i), 'all') %>"),
                  "one of them: The script threw 15. and 14 more ("))
      << log[0];
}

// Of an error that stands for several, and is no more than a cause or a part itself, only the words were told.
TEST_F(ScriptErrors, TellOfCausesAndPartsAsATree) {
  EXPECT_EQ(
      "/page.asp:2: top; caused by: many (/page.asp:3) [one of them: a (/page.asp:4) [caused by: b]; one of them: few "
      "(/page.asp:5) [one of them: The script threw 5.; one of them: t]]; caused by: c (/page.asp:6) (Error, "
      "0x80004005)",
      told("<%\nthrow new Error('top', { cause:\nnew AggregateError([\nnew Error('a', { cause: 'b' }),\n"
           "new AggregateError([5, 't'], 'few')], 'many', { cause:\nnew Error('c') }) }) %>"));
  for (const char* piece :
       {"<dt>Cause</dt><dd>many (/page.asp:3)</dd>",
        "<dt>Part</dt><dd><span style=\"margin-left:2rem\">a (/page.asp:4)</span></dd>",
        "<dt>Cause</dt><dd><span style=\"margin-left:4rem\">b</span></dd>",
        "<dt>Part</dt><dd><span style=\"margin-left:4rem\">t</span></dd>", "<dt>Cause</dt><dd>c (/page.asp:6)</dd>"})
    EXPECT_TRUE(has(shown, piece)) << piece << shown;
  EXPECT_EQ(
      "/page.asp:1: all; one of them: The script threw 1.; one of them: x [caused by: all [one of them: The script "
      "threw 1.]] (AggregateError, 0x80004005)",
      told("<% var all = new AggregateError([1], 'all'); all.errors.push(all, new Error('x', { cause: all })); throw "
           "all %>"));
  EXPECT_TRUE(has(told("<% throw new AggregateError(Array.from({ length: 12 }, (_, i) => new Error('p' + i, { cause: "
                       "'c' + i })), 'all') %>"),
                  "; one of them: p7 [caused by: c7] and 4 more ("))
      << log[0];
}

// It was told at the place of its cause.
TEST_F(ScriptErrors, OutOfAMarkHaveTheirOwnPlaceAndTheirCauseItsOwn) {
  EXPECT_EQ("/page.asp:5: outer; caused by: deep (/page.asp:3); in (text):1:1 (#%a#) (Error, 0x80004005)",
            told("<% var m = Server.CreateObject('Mirt'); m.Script = this;\nm.ProcessTemplate('(#%a#)');\n"
                 "function deep() { throw new Error('deep') }\nfunction OnDraw_a() { try { deep() } catch (e) {\n"
                 "throw new Error('outer', { cause: e }) } } %>"));
  for (const char* piece : {"<dt>Line</dt><dd>5</dd>",
                            "<ol>\n<li>OnDraw_a(), /page.asp:5</li>\n<li><code>(#%a#)</code>, (text):1:1</li>\n"
                            "<li>the page, /page.asp:2</li>\n</ol>",
                            "<ol>\n<li>deep(), /page.asp:3</li>\n<li>OnDraw_a(), /page.asp:4</li>\n"})
    EXPECT_TRUE(has(shown, piece)) << piece << shown;
  EXPECT_EQ(
      "/page.asp:3: outer; caused by: deep (/page.asp:4); in (text):1:1 (#%a#) (Error, 0x80004005)",
      told("<% var m = Server.CreateObject('Mirt'); m.Script = this;\ntry { m.ProcessTemplate('(#%a#)') } catch "
           "(e) {\nthrow new Error('outer', { cause: e }) }\nfunction OnDraw_a() { throw new Error('deep') } %>"));
  EXPECT_TRUE(has(shown, "<ol>\n<li><code>(#%a#)</code>, (text):1:1</li>\n<li>the page, /page.asp:3</li>\n</ol>"))
      << shown;
}

TEST_F(ScriptErrors, SayHowManyCausesAreNotShown) {
  EXPECT_TRUE(
      has(told("<% var e = new Error('e0.'); for (var i = 1; i < 30; i++) e = new Error('e' + i + '.', { cause: "
               "e }); throw e %>"),
          "/page.asp:1: e29.; caused by: e28."))
      << log[0];
  EXPECT_TRUE(has(log[0], "; caused by: e14. and 14 more (Error, ")) << log[0];
  EXPECT_TRUE(has(shown, "<dt>Causes</dt><dd>and 14 more</dd>")) << shown;
}

TEST_F(ScriptErrors, ThatAreTheirOwnCauseEnd) {
  EXPECT_EQ("/page.asp:1: me (Error, 0x80004005)", told("<% var e = new Error('me'); e.cause = e; throw e %>"));
  EXPECT_EQ("/page.asp:1: a; caused by: b (Error, 0x80004005)",
            told("<% var a = new Error('a'), b = new Error('b', { cause: a }); a.cause = b; throw a %>"));
  EXPECT_TRUE(has(told("<% class Endless extends Error { get cause() { return new Endless('again' + n++) } }"
                       " var n = 0; throw new Endless('first') %>"),
                  " more ("))
      << log[0];
}

TEST_F(ScriptErrors, InAnIncludeNameThePageToo) {
  folder.write("part.inc", "<%\n\nthrow new Error('in include') %>");
  EXPECT_EQ("/part.inc:3: in include; in the page /page.asp (Error, 0x80004005)",
            told("<!--#include file=\"part.inc\"-->"));
}

TEST_F(ScriptErrors, SayTheirCodeOnceAndNoSourceThatIsEmpty) {
  EXPECT_EQ("/page.asp:1: text (0x80004005)", told("<% throw 'text' %>"));
  EXPECT_EQ(
      "/page.asp:1: Object doesn't support this property or method: 'Response.Wrte', did you mean 'Write'? "
      "(0x80020006) (TypeError)",
      told("<% Response.Wrte(1) %>"));
}

// Read from the right, a line told of another page.
TEST_F(ScriptErrors, TurnNoLineOfTheLog) {
  EXPECT_EQ("/page.asp:1: a\\u202Eb\\u2066 (Error, 0x80004005)", told("<% throw new Error('a\\u202Eb\\u2066') %>"));
}

// The lines of the page were another matter: there the characters did what they do.
TEST_F(ScriptErrors, ShowWhatTurnsTheDirectionOfWriting) {
  told("<%\n// \u061Ca\u202E\nvar x = '\u202E\u2066'; throw new Error('m\u202E') %>");
  for (const char* piece :
       {"<h1>m\\u202E</h1>", "    2  // \\u061Ca\\u202E\n",
        "    3  var x = '\\u202E\\u2066'; throw new Error('m\\u202E') %&gt;</span><span class=\"caret\">       "
        "                             "})
    EXPECT_TRUE(has(shown, piece)) << piece << shown;
}

// An include has no directive of its own: its lines were read as UTF-8.
TEST_F(ScriptErrors, ShowTheLinesOfAnIncludeInTheCodePageOfItsPage) {
  folder.write("old.inc", "<% function f() {\n  var s = '\xE4\xF6'; null.x }\n%>");
  told("<%@ CodePage=1252 %><!--#include file=\"old.inc\"--><% f() %>");
  EXPECT_TRUE(has(shown, "    2    var s = '\u00E4\u00F6'; null.x }</span>")) << shown;
  folder.write("new.inc", "<% function f() {\n  var s = '\u00E4'; null.x }\n%>");
  folder.write("child.asp", "<!--#include file=\"new.inc\"--><% f() %>");
  told("<%@ CodePage=1252 %><% Server.Execute('child.asp') %>");
  EXPECT_TRUE(has(shown, "    2    var s = '\u00E4'; null.x }</span>")) << shown;
}

TEST_F(ScriptErrors, OfATextThatIsTooLongNameTheLimits) {
  EXPECT_EQ(
      "/page.asp:2: Out of memory: a text has 2147483647 characters at most, and what a page takes is limited by "
      "script_memory (RangeError, 0x800A0007)",
      told("<%\nfor (var s = 'text';;) s += s %>"));
}

TEST_F(ScriptErrors, AtALimitShowTheLoopThatRan) {
  options.script_timeout = std::chrono::seconds(1);
  folder.write("loop.inc", "<%\nfunction lib() {\n  var n = 0;\n  for (;;) n++;\n}\n%>");
  EXPECT_TRUE(has(told("<!--#include file=\"loop.inc\"-->\n<%\nResponse.Write('x');\nlib() %>"),
                  "/loop.inc:4: The page took longer than the site allows. "))
      << log[0];
  for (const char* piece : {"<dt>Line</dt><dd>4</dd>", "<dt>Column</dt><dd>3</dd>",
                            "<span class=\"here\">    4    for (;;) n++;</span><span class=\"caret\">         ^</span>",
                            "<li>lib(), /loop.inc:4</li>\n<li>the page, /page.asp:4</li>"})
    EXPECT_TRUE(has(shown, piece)) << piece << shown;
  EXPECT_TRUE(has(told("<% var m = Server.CreateObject('Mirt'); m.Script = this;\nm.ProcessTemplate('(#%a#)');\n"
                       "function OnDraw_a() {\n  while (true) {}\n} %>"),
                  "/page.asp:4: The page took longer than the site allows. "))
      << log[0];
  EXPECT_TRUE(has(shown, "<li>OnDraw_a(), /page.asp:4</li>")) << shown;
}

}  // namespace
