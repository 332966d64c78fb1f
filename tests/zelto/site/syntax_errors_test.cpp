// A script that cannot be parsed, as the page's author finds it on the debug page and in the log's line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;

struct Row {
  const char* page;
  const char* line;    // of the log, without what follows the words
  const char* column;  // on the page
};

class SyntaxErrors : public test::PageRunFixture {
 protected:
  SyntaxErrors() { options.debug = true; }

  // Runs each: what the log and the page tell.
  template <std::size_t count>
  void expect(const Row (&rows)[count]) {
    for (const Row& row : rows) {
      log.clear();
      const MemorySink sink = run(row.page, "");
      EXPECT_EQ(500, sink.head.status) << row.page;
      EXPECT_EQ(std::vector<std::string>{std::string(row.line) + " (SyntaxError, 0x80004005)"}, log) << row.page;
      EXPECT_TRUE(has(sink.body, std::string("<dt>Column</dt><dd>") + row.column + "</dd>")) << row.page << sink.body;
      EXPECT_TRUE(has(sink.body, "<span class=\"caret\">")) << row.page;
      EXPECT_FALSE(has(sink.body, "$zelto")) << sink.body;
    }
  }
};

// They were told of a line behind the end of the file.
TEST_F(SyntaxErrors, OfAScriptThatEndsTooEarlySayWhatIsOpen) {
  constexpr Row kRows[] = {
      {"<% if(1){ %>", "/page.asp:1: This \"{\" is never closed.", "9"},
      {"<% if (1) { %>\n<% for (;;) { %>\nabc\n<% } %>\n", "/page.asp:1: This \"{\" is never closed.", "11"},
      {"<%\nvar a = f(1,\n2\n%>", "/page.asp:2: This \"(\" is never closed.", "10"},
      {"<% var a = `abc;\nvar b = 1; %>\n", "/page.asp:1: This template literal is never closed.", "12"},
      {"<% var a = `abc ${1} def %>\n", "/page.asp:1: This template literal is never closed.", "12"},
      {"text\n<% /* abc;\nvar b = 1; %>\nhtml", "/page.asp:2: This comment is never closed.", "4"},
      {"text\n<% var a = %>", "/page.asp:2: The script ends too early: something is missing behind this.", "10"},
  };
  expect(kRows);
}

TEST_F(SyntaxErrors, OfOneLineSayWhichStringOrBracketIsOpen) {
  constexpr Row kRows[] = {
      {"<% var a = \"abc;\nvar b = 1; %>\n", "/page.asp:1: This string is not closed in its line.", "12"},
      {"<% var a = 'its', b = 'x;\n%>", "/page.asp:1: This string is not closed in its line.", "23"},
      {"<% var a = /abc;\nvar b = 1; %>\n", "/page.asp:1: This regular expression is not closed in its line.", "12"},
      {"<%\nvar a = [1, 2;\n%>",
       "/page.asp:2: Unexpected token ';'. Expected either a closing ']' or a ',' following an array element: the "
       "\"[\" in line 2, column 9 is open.",
       "14"},
      {"<% if (a { %>\nabc<% } %>",
       "/page.asp:1: Unexpected token '{'. Expected ')' to end an 'if' condition: the \"(\" in line 1, column 7 is "
       "open.",
       "10"},
      {"<% Response.Write(1; %>",
       "/page.asp:1: Unexpected token ';'. Expected ')' to end an argument list: the \"(\" in line 1, column 18 is "
       "open.",
       "20"},
      {"<%\nvar a = {b: 1);\n%>", "/page.asp:2: This \")\" closes nothing: the \"{\" in line 2, column 9 is open.",
       "14"},
      {"<% function f() { %>\ntext\n<% } } %>", "/page.asp:3: This \"}\" closes nothing.", "6"},
      {"<% } %>", "/page.asp:1: This \"}\" closes nothing.", "4"},
  };
  expect(kRows);
}

TEST_F(SyntaxErrors, StandUnderTheWordThatCannotBeThere) {
  constexpr Row kRows[] = {
      {"<%\nvar b; else c;\n%>", "/page.asp:2: Unexpected keyword 'else'", "8"},
      {"<% var = 1; %>", "/page.asp:1: Unexpected token '='", "8"},
      {"a\nb\n<% var = 1; %>", "/page.asp:3: Unexpected token '='", "8"},
      {"a\r\nb\r\n<%\r\n\tvar = 1;\r\n%>", "/page.asp:4: Unexpected token '='", "6"},
      {"a\rb\r<%\r\tvar = 1;\r%>", "/page.asp:4: Unexpected token '='", "6"},
      {"<% f(1, 1); o.Name(2); a b; %>", "/page.asp:1: Unexpected identifier 'b'", "26"},
      {"<%\nvar p = { a: function () {\n  if (x) { y();\n}, b: 1 };\n%>",
       "/page.asp:4: Unexpected token ',': the \"{\" in line 2, column 26 is open.", "2"},
      {"<%\nbreak;\n%>", "/page.asp:2: 'break' is only valid inside a switch or loop statement.", "6"},
      {"<% let a = 1; let a = 2; %>", "/page.asp:1: Cannot declare a let variable twice: 'a'.", "19"},
      {"<% return 1; %>", "/page.asp:1: Return statements are only valid inside functions.", "4"},
  };
  expect(kRows);
}

// The script that the page becomes has calls where the page has text.
TEST_F(SyntaxErrors, AreNotToldInWordsThatTheAuthorHasNotWritten) {
  constexpr Row kRows[] = {
      {"<% foo( %>\ntext\n<% ) %>", "/page.asp:1: Page text cannot stand here: the \"(\" in line 1, column 7 is open.",
       "11"},
      {"<% switch (1) { %>\n <% case 1: %> a <% } %>",
       "/page.asp:1: Page text cannot stand here: the \"{\" in line 1, column 15 is open.", "19"},
      {"<% do x() %>text<% while(0) %>", "/page.asp:1: Page text cannot stand here.", "13"},
      {"x\n<%= a; b %>\n", "/page.asp:2: Unexpected token ';': <%= %> takes one expression.", "6"},
      {"x\n<%= a b %>\n", "/page.asp:2: Unexpected identifier 'b': <%= %> takes one expression.", "7"},
      {"<%= f( %>\n", "/page.asp:1: This \"(\" is never closed: its <%= %> ends before.", "6"},
      {"<%= [1, 2 %>\n", "/page.asp:1: This \"[\" is never closed: its <%= %> ends before.", "5"},
      {"<%= a] %>", "/page.asp:1: This \"]\" closes nothing.", "6"},
      {"<%= a + %>", "/page.asp:1: This expression ends too early.", "4"},
      {"<% break; %>\ntext", "/page.asp:1: 'break' is only valid inside a switch or loop statement.", "9"},
  };
  expect(kRows);
}

TEST_F(SyntaxErrors, InAnIncludeNameThePageToo) {
  folder.write("bad.inc", "<%\nvar x = ;\n%>\n");
  const MemorySink sink = run("<!--#include file=\"bad.inc\"-->\nabc\n", "");
  EXPECT_EQ(
      std::vector<std::string>{"/bad.inc:2: Unexpected token ';'; in the page /page.asp (SyntaxError, 0x80004005)"},
      log);
  EXPECT_TRUE(
      has(sink.body, "<span class=\"here\">    2  var x = ;</span><span class=\"caret\">               ^</span>"))
      << sink.body;
}

// A bracket in a far line, or in another file, is shown as well.
TEST_F(SyntaxErrors, ShowTheOpenBracketToo) {
  folder.write("open.inc", "<%\n\n  var all = f(\n%>");
  const MemorySink other = run("<!--#include file=\"open.inc\"-->\n<% 1; %>", "");
  ASSERT_EQ(1u, log.size());
  EXPECT_TRUE(
      has(log[0], "/page.asp:1: Page text cannot stand here: the \"(\" in line 3, column 14 of open.inc is open."))
      << log[0];
  EXPECT_TRUE(has(other.body, "<h2>Open: &quot;(&quot;</h2>\n<p>/open.inc:3:14</p>\n<pre>")) << other.body;
  EXPECT_TRUE(has(other.body, "<span class=\"here\">    3    var all = f(</span>")) << other.body;
  const MemorySink near = run("<%\nf(1;\n%>", "");
  EXPECT_FALSE(has(near.body, "<h2>Open")) << near.body;
}

// As wide as they are where each character has its cell.
TEST_F(SyntaxErrors, HaveTheirCaretUnderWideCharacters) {
  const MemorySink sink = run("<%\n\ts = \"\u65E5\u672C\U0001F389e\u0301\"; var = 1;\n%>", "");
  EXPECT_TRUE(has(sink.body, "<span class=\"caret\">       \t     \u3000\u3000\u3000        ^</span>")) << sink.body;
  EXPECT_TRUE(has(sink.body, "<dt>Column</dt><dd>19</dd>")) << sink.body;
}

TEST_F(SyntaxErrors, ShowAPartOfALongLine) {
  const std::string many(100'000, 'x');
  const MemorySink sink = run("<% var a = '" + many + "'; var = 1; var b = '" + many + "' %>", "");
  EXPECT_LT(sink.body.size(), 5'000u);
  EXPECT_TRUE(has(sink.body, "<pre><span class=\"here\">    1  …xxx")) << sink.body;
  EXPECT_TRUE(has(sink.body, "x'; var = 1; var b = 'xx")) << sink.body;
  EXPECT_TRUE(has(sink.body, "xxx…</span>")) << sink.body;
  // Seven of the number, the ellipsis, and what is in front of the sign.
  EXPECT_TRUE(has(sink.body, "<span class=\"caret\">" + std::string(7 + 120, ' ') + "^</span>")) << sink.body;
}

// "Unexpected identifier 'Promise'" alone helps nobody.
TEST_F(SyntaxErrors, OfWordsThatAPageMayNotUseThereSayTheRule) {
  constexpr Row kRows[] = {
      {"<%\nvar a = await Promise.resolve(1) %>",
       "/page.asp:2: Unexpected identifier 'Promise': await stands in async functions only.", "15"},
      {"<%\nimport x from 'y' %>",
       "/page.asp:2: Unexpected identifier 'x': a page is no module, and has no import and export.", "8"},
      {"<%\nexport default 1 %>",
       "/page.asp:2: Unexpected keyword 'export': a page is no module, and has no import and export.", "1"},
  };
  expect(kRows);
}

// "Maximum call stack size exceeded." was told, of no line. How deep the engine can go is its own affair.
TEST_F(SyntaxErrors, OfAScriptThatIsNestedTooDeeplyHaveAPlace) {
  const auto repeat = [](std::string_view piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
  };
  const std::string brackets = failed("<%\nvar ok;\nvar x = " + repeat("[", 20'000) + repeat("]", 20'000) + "; %>");
  EXPECT_TRUE(log[0].starts_with("/page.asp:3: The script is nested too deeply: ")) << log[0];
  EXPECT_TRUE(log[0].ends_with(" brackets are open here. (SyntaxError, 0x80004005)")) << log[0];
  EXPECT_TRUE(has(brackets, "<span class=\"here\">    3  …[[[")) << brackets;
  failed("<%\nvar ok;\n" + repeat("if (ok) ", 20'000) + "; %>");
  EXPECT_EQ("/page.asp:3: The script is nested too deeply. (SyntaxError, 0x80004005)", log[0]);
}

TEST_F(SyntaxErrors, OfThePageItselfHaveTheirColumn) {
  const MemorySink sink = run("x\n <%= %>\n", "");
  EXPECT_TRUE(has(sink.body, "<dt>Column</dt><dd>5</dd>")) << sink.body;
}

}  // namespace
