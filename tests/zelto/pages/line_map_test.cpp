// Compiled pages, run: what they write, and where their errors are said to be.
#include "pages/programs.h"
#include "zelto/pages/site_fixture.h"
#include "zelto/script/script_fixture.h"

namespace {

using zelto::script::Outcome;

class LineMap : public test::SiteFolder {
 protected:
  Outcome run(std::string_view text) {
    write("page.asp", text);
    page_ = korlib::make<test::Page>();
    zelto::script::Realm realm(engine_);
    realm.set_object(L"Response", page_.get());
    realm.set_output(page_.get());
    const zelto::LoadedPage loaded = programs().load("/page.asp", path_of("page.asp"));
    if (loaded.error) return {Outcome::failed, loaded.error};
    return realm.run(loaded.program);
  }
  std::string written(std::string_view text) {
    const Outcome outcome = run(text);
    if (outcome.error) return "error: " + where(outcome);
    return korlib::to_utf8(page_->text);
  }
  // "file:line message"
  std::string where(const Outcome& outcome) {
    if (!outcome.error) return "no error";
    return outcome.error->file.substr(root.size()) + ":" + std::to_string(outcome.error->line) + " " +
           korlib::to_utf8(outcome.error->message);
  }
  std::string place(std::string_view text) {
    const std::string all = where(run(text));
    return all.substr(0, all.find(' '));
  }
  zelto::Programs& programs() {
    if (!programs_) programs_ = std::make_unique<zelto::Programs>(root);
    return *programs_;
  }

  zelto::script::Engine engine_;
  CComPtr<test::Page> page_;
  std::unique_ptr<zelto::Programs> programs_;
};

TEST_F(LineMap, WritesTextAndExpressions) {
  const struct {
    const char* page;
    const char* output;
  } rows[] = {
      {"a<%= 1 + 1 %>b", "a2b"},
      {"<%= 1, 2 %>", "2"},
      {"<%= 3; %>", "3"},
      {"<%= 3 ; ; \n %>", "3"},
      {"<%= 4 // why\n %>", "4"},
      {"<%= 4 /* why */ %>", "4"},
      {"<%= // why\n 5 %>", "5"},
      {"<%= 6 // why %>!", "6!"},
      {"<%=\r\n7\r\n%>", "7"},
      {"<%= {a: 8}.a %>", "8"},
      {"<%= function () { return 9; }() %>", "9"},
      {"<%= 'a;' %>", "a;"},
      {"<%= [1, 2].join() %>", "1,2"},
      {"<% for (var i = 0; i < 3; i++) { %>x<%= i %>\n<% } %>", "x0\nx1\nx2\n"},
      {"<% if (false) { %>no<% } else { %>yes<% } %>", "yes"},
      {"<% if (true) %>one<% else %>two", "one"},
      {"<% [1, 2].forEach(function (n) { %>(<%= n %>)<% }); %>", "(1)(2)"},
      {"<% function row(n) { %><li><%= n %></li><% } row(1); row(2); %>", "<li>1</li><li>2</li>"},
      {"<% var a = 1 %>x<% a = a + 1 %><%= a %>", "x2"},
      {"<% // comment %>x", "x"},
      {"<% /* a %>b<% */ %>", ""},
      {"<% var t = `%", "error: /page.asp:1 This \"<%\" is not closed with \"%>\"."},
      {"<script runat=server>function f() { return 'f'; }</script><%= f() %>", "f"},
      {"<%= f() %><script runat=server>function f() { return 'f'; }</script>", "f"},
      {"<% var s = 'a\\\r\nb' %><%= s %>", "ab"},
      {"<% var s = `a\r\nb\rc` %><%= s.length %>", "5"},
      {"$zelto<%= typeof x %>", "$zeltoundefined"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.output, written(row.page)) << row.page;
}

TEST_F(LineMap, PutsRuntimeErrorsOnTheirLine) {
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    const auto lines = [&](std::string text) {
      for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += end.size())
        text.replace(at, 1, end);
      return text;
    };
    EXPECT_EQ("/page.asp:1", place(lines("<% missing(); %>")));
    EXPECT_EQ("/page.asp:3", place(lines("a\nb\n<% missing(); %>")));
    EXPECT_EQ("/page.asp:4", place(lines("a\n<%\n\nmissing();\n%>")));
    EXPECT_EQ("/page.asp:3", place(lines("<%= 1 %>\n<%=\n missing() %>")));
    EXPECT_EQ("/page.asp:2", place(lines("<%@ Language=JScript %>\n<% missing(); %>")));
    EXPECT_EQ("/page.asp:4", place(lines("<%\n@ Language=JScript\n@%>\n<% missing(); %>")));
    EXPECT_EQ("/page.asp:4", place(lines("<% function f() {\n%>\ntext\n<% missing(); } %>\n\n<% f(); %>")));
    EXPECT_EQ("/page.asp:4", place(lines("\n<script runat=server>\n\nmissing();</script>")));
    EXPECT_EQ("/page.asp:3", place(lines("<% var s = `\n\n`; missing(); %>")));
    EXPECT_EQ("/page.asp:3", place(lines("<% /*\n\n*/ missing(); %>")));
    EXPECT_EQ("/page.asp:2", place(lines("<%\nthrow new Error('x');\n%>")));
  }
}

TEST_F(LineMap, PutsErrorsOfIncludesIntoTheInclude) {
  write("lib/f.inc", "<%\nfunction f() {\n  missing();\n}\n%>");
  EXPECT_EQ("/lib/f.inc:3", place("a\n<!--#include file=lib/f.inc-->\n<% f(); %>"));
  EXPECT_EQ("/page.asp:3", place("a\n<!--#include file=lib/f.inc-->\n<% missing(); %>"));
  write("outer.inc", "\n\n<!--#include file=lib/f.inc--><% f(); %>");
  EXPECT_EQ("/lib/f.inc:3", place("<!--#include file=outer.inc-->"));
}

TEST_F(LineMap, PutsErrorsOfScriptFilesIntoTheScriptFile) {
  write("lib/f.js", "function f() {\r\n\r\n  missing();\r\n}");
  write("bad.js", "var a;\nvar = 3;");
  const std::string tag = "<script language=JScript runat=server src=lib/f.js></script>";
  EXPECT_EQ("/lib/f.js:3", place("a\n" + tag + "\n<% f(); %>"));
  EXPECT_EQ("/page.asp:3", place("a\n" + tag + "\n<% missing(); %>"));
  EXPECT_EQ("/page.asp:2", place("a\n" + tag + " <% missing(); %>"));
  EXPECT_EQ("/bad.js:2", place("\n\n\n<script runat=server src=bad.js></script>"));
  // Script of a page may use what stands further down.
  EXPECT_EQ(
      "error: /page.asp:1 The include "
      "file \"g.js\" was not found.",
      written("<% Response.Write(g()); %><script runat=server src=g.js></script>"));
  write("g.js", "function g() { return 'g'; } // no line end");
  EXPECT_EQ("g--", written("<% Response.Write(g()); %>-<script runat=server src=g.js></script>-"));
}

TEST_F(LineMap, PutsSyntaxErrorsOnTheirLine) {
  write("bad.inc", "\n\n<% var = 3; %>");
  EXPECT_EQ("/page.asp:2", place("a\n<% var = 3; %>\nb"));
  EXPECT_EQ("/bad.inc:3", place("a\n<!--#include file=bad.inc-->"));
  EXPECT_EQ("/page.asp:3", place("a\n\n<%= ) %>"));
  EXPECT_EQ("/page.asp:2", place("a\n<% var s = \"%>\"; %>\nb"));
  // An open block is missed where the page ends.
  EXPECT_TRUE(place("a\n<% if (true) { %>\nb\n").starts_with("/page.asp:"));
}

// The engine ends lines at two characters that no editor ends them at.
TEST_F(LineMap, PutsErrorsOnTheLineThatAnEditorShows) {
  for (const std::string end : {"\xE2\x80\xA8", "\xE2\x80\xA9"}) {
    EXPECT_EQ("/page.asp:2", place("<% var s = 'a" + end + "b';\nmissing(); %>"));
    EXPECT_EQ("/page.asp:2", place("<% var s = 'a\\" + end + "b\\'';\nmissing(); %>"));
    EXPECT_EQ("/page.asp:2", place("<% var s = `a" + end + "b`;\nmissing(); %>"));
    EXPECT_EQ("/page.asp:2", place("<% // a" + end + "\nmissing(); %>"));
    EXPECT_EQ("/page.asp:2", place("<% /* a" + end + "*/ var a" + end + end + "\nmissing(); %>"));
    EXPECT_EQ("/page.asp:3", place("a" + end + "b\n<%= 1 %>" + end + "\n<% missing(); %>"));
    EXPECT_EQ("3", written("<%= 'a" + end + "b' === `a" + end + "b` && 'a" + end + "b'.length %>"));
  }
}

// Columns count characters from 1. The engine points at the end of a name that is missing, at the dot of a
// member that cannot be had.
TEST_F(LineMap, PutsErrorsIntoTheirColumn) {
  const struct {
    const char* page;
    int line;
    int column;
  } rows[] = {
      {"<% missing(); %>", 1, 11},
      {"<% null.x %>", 1, 8},
      {"text <% null.x %>", 1, 13},
      {"text <%= null.x %>", 1, 14},
      {"\n<%=\n null.x %>", 3, 6},
      {"<%\n  var a; null.x %>", 2, 14},
      // Behind and in front of what is rewritten.
      {"<% var o = {}, t = o.a; o.b; null.x %>", 1, 34},
      {"<% if (false) Session('a') = 1; null.x %>", 1, 37},
      {"<% Response('a') = null.x %>", 1, 24},
      {"<% null.x; Response('a') = 1 %>", 1, 8},
      {"<% var f = String, o = {}; f(o.a, o.b); null.x %>", 1, 45},
      // Within what was put in: in front of it.
      {"<%  throw 5 %>", 1, 10},
      {"<% var c = 1; c(1) = 2 %>", 1, 15},
      // Characters, and not the units that the engine counts.
      {"\xF0\x9F\x98\x80 <% '\xF0\x9F\x98\x80'; null.x %>", 1, 15},
      {"<% 'a\xE2\x80\xA8'; null.x %>", 1, 14},
      {"<% `a\xE2\x80\xA8`; null.x %>", 1, 14},
      // What the host writes for the page is at the page's own place.
      {"text <%= { toString() { return {} } } %>", 1, 9},
  };
  for (const auto& row : rows) {
    const Outcome outcome = run(row.page);
    ASSERT_TRUE(outcome.error) << row.page;
    EXPECT_EQ(row.line, outcome.error->line) << row.page;
    EXPECT_EQ(row.column, outcome.error->column) << row.page << '\n' << where(outcome);
  }
}

TEST_F(LineMap, RunsALargePageOfManyIncludes) {
  write("a.inc", "<% n++; %>");
  std::string page = "<% var n = 0; %>";
  for (int i = 0; i < 10'000; ++i) page += "<!--#include file=a.inc-->";
  EXPECT_EQ("10000", written(page + "<%= n %>"));
}

}  // namespace
