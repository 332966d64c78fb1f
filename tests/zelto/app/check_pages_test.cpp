#include "zelto/app/check_fixture.h"

#include <filesystem>

namespace {

using CheckedPages = test::CheckedSite;

TEST_F(CheckedPages, WithoutFaultsSayNothing) {
  write("default.asp", "<%@ Language=\"JavaScript\" %>\n<!-- #include file=\"inc/a.inc\" --><%= a %>");
  write("inc/a.inc", "<% var a = 1; Session(\"x\") = 2; %>");
  EXPECT_EQ("", found());
}

TEST_F(CheckedPages, TellWhereTheirSyntaxIsWrong) {
  write("a.asp", "<p>\n<% var x = (3;\n  var y = 4; %>");
  write("b.asp", "<% Response.Write(\"\u00E9\" + f(1)); var p = { a: 1 b: 2 }; %>");
  write("c.asp", "<%= y y %>");
  write("sub/d.asp", "<p></p>\n<% if (1) { %>\n<p>\n");
  write("e.asp", "one\ntwo <% three");
  write("f.asp", "<% f(1, 2 %>");
  write("g.asp", "<% var a = 1 # 2; %>");
  EXPECT_EQ(
      "a.asp:2:14: error: Unexpected token ';'. Expected ')' to end a compound expression: the \"(\" in line 2, column "
      "12 is open.\n"
      "b.asp:1:47: error: Unexpected identifier 'b'. Expected '}' to end an object literal: the \"{\" in line 1, "
      "column 40 is open.\n"
      "c.asp:1:7: error: Unexpected identifier 'y': <%= %> takes one expression.\n"
      "e.asp:2:5: error: This \"<%\" is not closed with \"%>\".\n"
      "f.asp:1:5: error: This \"(\" is never closed.\n"
      "g.asp:1:14: error: Invalid character: '#'\n"
      "sub/d.asp:2:11: error: This \"{\" is never closed.\n",
      found());
}

TEST_F(CheckedPages, TellTheFaultOfAnIncludeOnceAndInItsFile) {
  write("inc/a.inc", "\n<% var a = ; %>");
  write("a.asp", "<!-- #include file=\"inc/a.inc\" -->");
  write("b.asp", "<!-- #include file=\"inc/a.inc\" -->");
  EXPECT_EQ("inc/a.inc:2:12: error: Unexpected token ';'\n", found());
}

TEST_F(CheckedPages, ThatOthersIncludeMayBeParts) {
  write("header.asp", "<% if (true) { %><h1></h1>");
  write("page.asp", "<!-- #include file=\"header.asp\" -->\n<% } %>");
  EXPECT_EQ(
      "header.asp:1:14: warning: Asked for by itself, a page that others include fails: This \"{\" is never closed.\n",
      found());
}

TEST_F(CheckedPages, TellTheColumnInALongLine) {
  std::string line;
  for (int i = 0; i < 5'000; ++i) line += "f({});";
  write("a.asp", "<% " + line + "f({)}; " + line + "%>");
  EXPECT_EQ(
      0U, found().find("a.asp:1:30007: error: This \")\" closes nothing: the \"{\" in line 1, column 30006 is open."));
}

TEST_F(CheckedPages, NameEachIncludeThatThereIsNot) {
  write("a.asp", "<!-- #include file=\"b.inc\" -->\n<!-- #include virtual=\"/none.inc\" -->");
  write("b.inc", "\n <!-- #include file=\"Sub/C.inc\" -->");
  write("sub/c.INC", "<% %>");
  write("sub/d.asp", "<script runat=\"server\" src=\"../../x.js\"></script>");
  EXPECT_EQ(
      "a.asp:2:24: error: The include file \"/none.inc\" was not found.\n"
      "b.inc:2:22: error: The include file \"Sub/C.inc\" was not found; in other letter case there is "
      "\"/sub/c.INC\".\n"
      "sub/d.asp:1:29: error: The include file \"../../x.js\" was not found.\n",
      found());
}

TEST_F(CheckedPages, AreLookedAtWithoutTheIncludesThatThereAreNot) {
  write("a.asp",
        "<!-- #include file=\"none.inc\" -->\n<% Response.Wrte(1);\npage.TemplateFolder = Server.MapPath('templates');"
        "page.DefaultTemplate = 'list.html'; Server.CreateObject('ADODB.Recordst') %>");
  write("templates/list.html", "(#;inNone#) (#%InNone#) (#*open");  // which the include may have
  write("b.asp", "<script runat=\"server\" src=\"none.js\"></script>\n<% ( %>");
  EXPECT_EQ(
      "a.asp:1:21: error: The include file \"none.inc\" was not found.\n"
      "a.asp:2:13: error: Response has no member 'Wrte'; did you mean 'Write'?\n"
      "a.asp:3:107: error: No class is registered as 'ADODB.Recordst'; did you mean 'ADODB.Recordset'?\n"
      "b.asp:1:29: error: The include file \"none.js\" was not found.\n"
      "b.asp:2:4: error: This \"(\" is never closed.\n"
      "templates/list.html:1:25: error: This mark is opened here and never closed.\n",
      found());
}

TEST_F(CheckedPages, InAnotherLanguageAreNamedOnceEach) {
  write("a.asp", "<%@ Language=\"PerlScript\" %>\n<% Dim x\nSet x = Nothing %>");
  write("b.asp", "\n<script language=\"PerlScript\" runat=\"server\">Dim y</script>");
  EXPECT_EQ(
      "a.asp:1:4: error: This host runs pages in JavaScript and VBScript: Language=\"PerlScript\" cannot be run.\n"
      "b.asp:2:1: error: This host runs pages in JavaScript and VBScript: <script language=\"PerlScript\"> cannot be "
      "run.\n",
      found());
}

TEST_F(CheckedPages, AreThoseThatAClientMayAskFor) {
  write("templates/a.asp", "<% ( %>");
  write(".git/b.asp", "<% ( %>");
  write("c.html", "<% ( %>");
  write("D.ASP", "<% ( %>");
  EXPECT_EQ("D.ASP:1:4: error: This \"(\" is never closed.\n", found());
}

TEST_F(CheckedPages, AreFoundOnceWhereLinksGoInCircles) {
  write("sub/a.asp", "<% ( %>");
  std::filesystem::create_directory_symlink("..", path_of("sub/up"));
  std::filesystem::create_directory_symlink("sub", path_of("other"));
  EXPECT_EQ("sub/a.asp:1:4: error: This \"(\" is never closed.\n", found());
}

TEST_F(CheckedPages, OfAnyContentComeToAnEnd) {
  write("a.asp", std::string(100'000, '\0'));
  write("b.asp", "<% " + std::string(200'000, '(') + " %>");
  write("c.asp", "<% " + std::string(200'000, '{') + " %>");
  write("d.asp", "<% `" + std::string(100'000, '$') + "\xFF\xFE%>");
  write("e.asp", "<!-- #include file=\"e.asp\" -->");
  EXPECT_NE(std::string::npos, found().find("e.asp:1:21: error: An include never ends"));
}

TEST_F(CheckedPages, HaveAnApplicationFileThatIsNotRun) {
  write("Global.asa", "<script runat=server>");
  EXPECT_EQ(
      "Global.asa:1:1: warning: This file is not run: what it declares for the application and its sessions does not "
      "happen.\n",
      found());
}

}  // namespace
