#include "pages/page_compiler.h"

#include <korlib_host/unicode.h>

#include <thread>

#include "zelto/pages/site_fixture.h"

namespace zelto::pages {
namespace {

class PageCompiler : public test::SiteFolder {
 protected:
  CompiledPage compile(const std::string& name) { return compile_page(root, path_of(name)); }
  CompiledPage compile_text(std::string_view text) {
    write("page.asp", text);
    return compile("page.asp");
  }

  // "file:line message" with the file from the site's root.
  std::string fault_of(const std::string& name) {
    try {
      compile(name);
    } catch (const PageSourceError& error) {
      return error.file.substr(root.size()) + ":" + std::to_string(error.line) + " " + error.what();
    }
    return "none";
  }
  std::string fault_of_text(std::string_view text) {
    write("page.asp", text);
    return fault_of("page.asp");
  }

  // What the page would write if its code did nothing.
  static std::wstring literals(const CompiledPage& page) {
    std::wstring all;
    for (const CComBSTR& text : page.program->literals) all += text.view();
    return all;
  }
  std::wstring literals_of(std::string_view text) { return literals(compile_text(text)); }
};

TEST_F(PageCompiler, KeepsTextAsItStands) {
  EXPECT_EQ(L"a\r\n b\u00fc\r<p>\n", literals_of("a\r\n b\xC3\xBC\r<p>\n"));
  EXPECT_EQ(L"", literals_of(""));
  using namespace std::string_view_literals;
  EXPECT_EQ(std::wstring(L"a\0b", 3), literals_of("a\0b"sv));
}

TEST_F(PageCompiler, MakesScriptsThatMayRunAsFunctions) {
  const auto scope_of = [this](std::string_view text) { return compile_text(text).program->scope; };
  EXPECT_TRUE(scope_of("").can_be_function);
  EXPECT_TRUE(scope_of("<p><%= Server.HTMLEncode(a) %></p><% Response.Write(b); rs.Close; try { } catch (e) { } %>")
                  .can_be_function);
  EXPECT_FALSE(scope_of("<p><%= a %></p>").may_hide);
  EXPECT_FALSE(scope_of("<p><%= eval('1') %></p>").can_be_function);
}

TEST_F(PageCompiler, DropsTheLineEndBehindADirective) {
  for (const char* line_end : {"\n", "\r\n", "\r"}) {
    EXPECT_EQ(std::wstring(line_end, line_end + std::string_view(line_end).size()) + L"a",
              literals_of(std::string("<%@ Language=JScript %>") + line_end + line_end + "a"));
  }
  EXPECT_EQ(L"a", literals_of("<% @ Language=LiveScript @%>\na"));
  EXPECT_EQ(L"a\n", literals_of("<%@ Language=JScript %>a\n"));
  EXPECT_EQ(L"\na", literals_of("<% x %>\na"));
  EXPECT_EQ(L"\na", literals_of("<%@ Language=JScript %>\n<% x %>\na"));
}

TEST_F(PageCompiler, ObeysThePageDirectiveAndNotAnIncludes) {
  write("inc.asp", "<%@ EnableSessionState=False CodePage=932 LCID=1041 %>\nx");
  const CompiledPage page = compile_text("<!--#include file=inc.asp-->\ny");
  EXPECT_TRUE(page.directive.uses_session);
  EXPECT_FALSE(page.directive.code_page);
  EXPECT_FALSE(page.directive.lcid);
  EXPECT_EQ(L"x\ny", literals(page));
}

TEST_F(PageCompiler, DecodesIncludesWithThePagesCodePageUnlessTheyAreMarked) {
  write("old.inc", "\xFC");
  write("new.inc", "\xEF\xBB\xBF\xC3\xBC");
  EXPECT_EQ(L"\u00e4\u00fc\u00fc",
            literals_of("<%@ CodePage=1252 %>\n\xE4<!--#include file=old.inc--><!--#include file=new.inc-->"));
}

TEST_F(PageCompiler, ReadsUtf16Pages) {
  using namespace std::string_view_literals;
  EXPECT_EQ(L"\u00fc",
            literals_of("\xFF\xFE<\0%\0@\0 \0c\0o\0d\0e\0p\0a\0g\0e\0=\0001\0002\0005\0002\0%\0>\0\xFC\0"sv));
}

TEST_F(PageCompiler, ResolvesIncludesFromTheFileOrFromTheRoot) {
  write("page.asp", "1<!--#include file=\"sub/a.inc\"-->5");
  write("sub/a.inc", "2<!--#include file=\"b.inc\"--><!--#include virtual=\"/top.inc\"-->");
  write("sub/b.inc", "3");
  write("top.inc", "4");
  EXPECT_EQ(L"12345", literals(compile("page.asp")));
  EXPECT_EQ(L"34", literals_of("<!--#include file=\"sub\\b.inc\"--><!--#include file=\"sub/../top.inc\"-->"));
  EXPECT_EQ(L"3", literals_of("<!--#include file=\"/sub/b.inc\"-->"));
}

TEST_F(PageCompiler, IncludesAFileAsOftenAsItIsNamed) {
  write("a.inc", "a");
  const CompiledPage page = compile_text("<!--#include file=a.inc--><!--#include file=a.inc-->");
  EXPECT_EQ(L"aa", literals(page));
  EXPECT_EQ(2u, page.files.size());
}

TEST_F(PageCompiler, SaysWhereAnIncludeCannotBeHad) {
  write("../secret.inc", "x");
  write("sub/page.asp", "\n\n<!--#include file=\"none.inc\"-->");
  EXPECT_EQ("/sub/page.asp:3 The include file \"none.inc\" was not found.", fault_of("sub/page.asp"));
  EXPECT_EQ("/page.asp:3 The include file \"../secret.inc\" lies outside the site.",
            fault_of_text("\r\n\r\n<!--#include file=\"../secret.inc\"-->"));
  EXPECT_EQ("/page.asp:2 The include file \"/../secret.inc\" lies outside the site.",
            fault_of_text("\r<!--#include virtual=\"/../secret.inc\"-->"));
  EXPECT_EQ("/page.asp:1 A virtual include begins with \"/\": \"sub/page.asp\".",
            fault_of_text("<!--#include virtual=\"sub/page.asp\"-->"));
  EXPECT_EQ("/page.asp:1 The file \"/sub\" cannot be read.", fault_of_text("<!--#include file=\"sub\"-->"));
  using namespace std::string_view_literals;
  EXPECT_EQ("/page.asp:1 The name of an include file holds a zero character.",
            fault_of_text("<!--#include file=\"a\0b\"-->"sv));
  EXPECT_TRUE(fault_of_text("<!--#include file=\"" + std::string(100'000, 'x') + "\"-->").ends_with("was not found."));
}

TEST_F(PageCompiler, RefusesALinkThatLeavesTheSite) {
  std::filesystem::create_symlink(write("../secret.inc", "x"), path_of("link.inc"));
  EXPECT_EQ("/page.asp:1 The include file \"link.inc\" lies outside the site.",
            fault_of_text("<!--#include file=\"link.inc\"-->"));
  // A folder whose name begins like the site's is outside too.
  write("../site2/x.inc", "x");
  EXPECT_EQ("/page.asp:1 The include file \"../site2/x.inc\" lies outside the site.",
            fault_of_text("<!--#include file=\"../site2/x.inc\"-->"));
}

TEST_F(PageCompiler, ReportsCyclesWhereTheyClose) {
  write("a.inc", "\n<!--#include file=\"sub/b.inc\"-->");
  write("sub/b.inc", "\n\n\n<!--#include virtual=\"/a.inc\"-->");
  EXPECT_EQ("/sub/b.inc:4 An include never ends: /a.inc includes /sub/b.inc includes /a.inc.",
            fault_of_text("<!--#include file=\"a.inc\"-->"));
  EXPECT_EQ("/page.asp:2 An include never ends: /page.asp includes /page.asp.",
            fault_of_text("x\n<!--#include file=\"page.asp\"-->"));
}

TEST_F(PageCompiler, ReportsFaultsInIncludesThere) {
  write("open.inc", "\n<% x");
  write("two.inc", "<%@ Language=JScript %>\n<%@ Language=JScript %>");
  write("other.inc", "\n\n<%@ Language=PerlScript %>");
  write("nowhere.inc", "\n<%@ LCID=99999 %>");
  write("empty.inc", "\n<%= ; %>");
  EXPECT_EQ("/open.inc:2 This \"<%\" is not closed with \"%>\".", fault_of_text("<!--#include file=open.inc-->"));
  EXPECT_EQ("/two.inc:2 A page has one directive only.", fault_of_text("<!--#include file=two.inc-->"));
  EXPECT_EQ("/other.inc:3 This host runs pages in JavaScript and VBScript: Language=\"PerlScript\" cannot be run.",
            fault_of_text("<!--#include file=other.inc-->"));
  EXPECT_EQ("/nowhere.inc:2 LCID=\"99999\" is not a locale that this host knows; 2048 is the neutral form.",
            fault_of_text("<!--#include file=nowhere.inc-->"));
  EXPECT_EQ("/empty.inc:2 <%= %> holds no expression.", fault_of_text("<!--#include file=empty.inc-->"));
}

// In script the engine would take it for a comment, and the page would run without the file.
TEST_F(PageCompiler, RefusesAnIncludeInsideScript) {
  write("a.inc", "<% var a; %>");
  const std::string said = " An include cannot stand inside script: put \"%>\" before it and \"<%\" after it.";
  EXPECT_EQ("/page.asp:3" + said, fault_of_text("x\n<% var b;\n<!--#include file=\"a.inc\"-->\n%>"));
  EXPECT_EQ("/page.asp:1" + said, fault_of_text("<% var b; <!-- #INCLUDE virtual='/a.inc' --> %>"));
  EXPECT_EQ("/page.asp:2" + said, fault_of_text("<%=\n<!--#include file=a.inc--> %>"));
  EXPECT_EQ("/page.asp:2" + said, fault_of_text("<script runat=server>\r\n<!--#include file=a.inc-->\r\n</script>"));
  EXPECT_EQ("/page.asp:2" + said, fault_of_text("<% `\xE2\x80\xA8`\n<!--#include file=a.inc--> %>"));
  write("inner.inc", "\n<% <!--#include file=a.inc--> %>");
  EXPECT_EQ("/inner.inc:2" + said, fault_of_text("<!--#include file=inner.inc-->"));
  // As text of the script it is none, nor in a comment, nor in the page's text.
  for (const char* page :
       {"<% var s = '<!--#include file=a.inc-->' %>", "<% `<!--#include file=a.inc-->` %>",
        "<% // <!--#include file=a.inc-->\n%>", "<% /* <!--#include file=a.inc--> */ %>",
        "<% <!-- hidden from old browsers\n//--> %>", "<% if (1) { %><!--#include file=a.inc--><% } %>",
        "<script><!--#include file=a.inc--></script>"}) {
    EXPECT_EQ("none", fault_of_text(page)) << page;
  }
}

// Of a file that was edited just now, a second edit could leave everything as it is. The time between writing
// and compiling may be longer on a busy machine, so it is tried again.
TEST_F(PageCompiler, IsNotSettledWhileOneOfItsFilesIsFresh) {
  write("page.asp", "<!--#include file=a.inc-->");
  write("a.inc", "old");
  while (!compile("page.asp").is_settled) std::this_thread::yield();
  const auto is_seen = [this] {
    write("a.inc", "new");
    return !compile("page.asp").is_settled;
  };
  bool is_fresh = false;
  for (int tries = 0; tries < 1000 && !is_fresh; ++tries) is_fresh = is_seen();
  EXPECT_TRUE(is_fresh);
}

TEST_F(PageCompiler, TakesScriptFilesAsTheScriptThatTheyAre) {
  write("lib/a.js", "var a = '<%= no page %>';\r\n");
  write("b.js", "\xEF\xBB\xBFvar b = 1 // the end");
  write("page.asp",
        "<script runat=server src=lib/a.js></script>-<script runat=server src=\"\\b.js\"></script>-"
        "<script runat=server src='/b.js'></script>");
  const CompiledPage page = compile("page.asp");
  EXPECT_EQ(L"--", literals(page));
  std::wstring wide;
  korlib::append_utf16(wide, page.program->text);
  const std::string text = korlib::to_utf8(wide);
  EXPECT_NE(std::string::npos, text.find("var a = '<%= no page %>';\n")) << text;
  EXPECT_NE(std::string::npos, text.find("var b = 1 // the end\n")) << text;
  ASSERT_EQ(3u, page.files.size());  // an edit of any makes the page anew
  EXPECT_TRUE(page.files[1].first.ends_with("/lib/a.js"));
}

TEST_F(PageCompiler, RefusesScriptFilesAsIncludes) {
  write("../secret.js", "x");
  std::filesystem::create_symlink(path_of("../secret.js"), path_of("link.js"));
  write("sub/page.inc", "\n<script runat=server src=none.js></script>");
  write("sub/loop.inc", "<script runat=server src=loop.inc></script>");
  EXPECT_EQ("/sub/page.inc:2 The include file \"none.js\" was not found.",
            fault_of_text("<!--#include file=sub/page.inc-->"));
  EXPECT_EQ("/page.asp:3 The include file \"../secret.js\" lies outside the site.",
            fault_of_text("\n\n<script runat=server src=../secret.js></script>"));
  EXPECT_EQ("/page.asp:1 The include file \"/../secret.js\" lies outside the site.",
            fault_of_text("<script runat=server src=/../secret.js></script>"));
  EXPECT_EQ("/page.asp:1 The include file \"link.js\" lies outside the site.",
            fault_of_text("<script runat=server src=link.js></script>"));
  EXPECT_EQ("/page.asp:1 The file \"/sub\" cannot be read.", fault_of_text("<script runat=server src=sub></script>"));
  EXPECT_EQ("/sub/loop.inc:1 An include never ends: /sub/loop.inc includes /sub/loop.inc.", fault_of("sub/loop.inc"));
  write("inc.js", "var a;\n<!-- #include file=b.js -->");
  EXPECT_EQ("/inc.js:2 An include cannot stand inside script: put \"%>\" before it and \"<%\" after it.",
            fault_of_text("<script runat=server src=inc.js></script>"));
}

TEST_F(PageCompiler, TakesTenThousandIncludesAndNoMore) {
  write("a.inc", "x");
  std::string page;
  for (int i = 0; i < 10'000; ++i) page += "<!--#include file=a.inc-->\n";
  EXPECT_EQ(20'000u, literals_of(page).size());
  EXPECT_EQ("/page.asp:10001 The page includes more than 10000 files.",
            fault_of_text(page + "<!--#include file=a.inc-->"));
}

TEST_F(PageCompiler, BoundsNestingAndSize) {
  for (int i = 0; i < 110; ++i) {
    write("n" + std::to_string(i) + ".inc", "<!--#include file=n" + std::to_string(i + 1) + ".inc-->");
  }
  EXPECT_EQ("/n100.inc:1 Includes are nested more than 100 deep.", fault_of("n0.inc"));
  write("n100.inc", "end");
  EXPECT_EQ(L"end", literals(compile("n0.inc")));

  write("large.inc", std::string(20 << 20, 'x'));
  std::string page;
  for (int i = 0; i < 7; ++i) page += "<!--#include file=large.inc-->";
  EXPECT_EQ("/page.asp:1 The page is too large.", fault_of_text(page));
}

TEST_F(PageCompiler, ReadsALargePage) {
  std::string page;
  for (int i = 0; i < 50'000; ++i) page += "<p>row <%= i %></p>\n";
  EXPECT_EQ(50'001u, compile_text(page).program->literals.size());
}

}  // namespace
}  // namespace zelto::pages
