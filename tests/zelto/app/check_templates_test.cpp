#include "zelto/app/check_fixture.h"

namespace {

constexpr std::string_view kPage =
    "<% var page = Server.CreateObject('Mirt'); page.AddScript(this);\n"
    "page.TemplateFolder = Server.MapPath('templates'); page.TemplateExt = '.html'; page.DefaultTemplate = 'list';\n"
    "page.Process(); var title = 1; function OnDraw_Rows() {} %>";

class CheckedTemplates : public test::CheckedSite {};

TEST_F(CheckedTemplates, WithoutFaultsSayNothing) {
  write("a.asp", kPage);
  write("templates/list.html",
        "(#;title#) (#*any#) (#%Rows|<li>(#/x#)</li>#|#(##)#) (# a note #) ^(#x^#) (#`part#) (#%_Message|a#)");
  write("templates/part.html", "(#!Save#) (#@side#)");
  EXPECT_EQ("", found());
}

TEST_F(CheckedTemplates, TellMarksThatAreNotClosedOrNotOpened) {
  write("templates/a.html", "<p>\n (#*name\n</p>");
  write("templates/b.html", "<ul>(#%Rows|<li>(#*word</li>#)</ul>");
  write("templates/c.html", "a\n  #) b");
  write("templates/d.html", "(#*a|(#*b#) c");
  write("a.asp", "<% function OnDraw_Rows() {} %>");
  EXPECT_EQ(
      "templates/a.html:2:2: error: This mark is opened here and never closed.\n"
      "templates/b.html:1:17: error: This mark is opened here and never closed.\n"
      "templates/c.html:2:3: error: This \"#)\" closes no mark.\n"
      "templates/d.html:1:1: error: This mark is opened here and never closed.\n",
      found());
}

TEST_F(CheckedTemplates, TellMarksWithoutAType) {
  write("templates/a.html", "(#name#) (#%Rows|(#word#)#)");
  write("a.asp", "<% function OnDraw_Rows() {} %>");
  EXPECT_EQ(
      "templates/a.html:1:1: warning: This mark shows nothing: 'n' is no type of mark, which stands in front of the "
      "name.\n"
      "templates/a.html:1:18: warning: This mark shows nothing: 'w' is no type of mark, which stands in front of the "
      "name.\n",
      found());
}

// A templator without a page has no types: its marks name members of its script.
TEST_F(CheckedTemplates, MayLackTypesWhereATemplatorWithoutAPageDrawsThem) {
  write("templates/letter.html", "(#name#) (#%Rows|(#naem#)#)");
  write("a.asp", kPage);
  write("templates/list.html", "(#name#) (#`part#)");
  write("templates/part.html", "(#name#)");
  write("z.asp", "<% Server.CreateObject('Mirt.TextTemplator'); function OnDraw_Rows() {} var name; %>");
  const auto told = [](const std::string& place, char first) {
    return "templates/" + place + ": warning: This mark shows nothing: '" + first +
           "' is no type of mark, which stands in front of the name.\n";
  };
  EXPECT_EQ(told("letter.html:1:18", 'n') + told("list.html:1:1", 'n') + told("part.html:1:1", 'n'), found());
}

TEST_F(CheckedTemplates, TellNamesThatTheirPageDoesNotHave) {
  write("a.asp", kPage);
  write("b.asp", "<% var titel, OnDraw_Rwos; %>");  // which draws another one
  write("templates/list.html", "(#;titel#)\n(#%Rwos|#)");
  EXPECT_EQ(
      "templates/list.html:1:1: warning: The script of \"/a.asp\", which draws this template, has no variable or "
      "function 'titel'; did you mean 'title'?\n"
      "templates/list.html:2:1: warning: The script of \"/a.asp\", which draws this template, has no function "
      "'OnDraw_Rwos'; did you mean 'OnDraw_Rows'?\n",
      found());
}

// Those that the component draws have a name that begins with "_", as the script's may.
TEST_F(CheckedTemplates, TellFunctionsThatTheComponentDoesNotHave) {
  write("a.asp", std::string(kPage) + "<% function OnDraw__Mine() {} %>");
  write("templates/list.html",
        "(#%_message|a#) (#%_InputV_Default|a|b#) (#%_Mine#)\n(#%_Mesage|a#) (#%_InputX|a#) (#%_CalendarOfMonths#)");
  const std::string told = ": warning: The script of \"/a.asp\", which draws this template, has no function 'OnDraw_";
  EXPECT_EQ("templates/list.html:2:1" + told + "_Mesage'; did you mean '_Message'?\n" +  //
                "templates/list.html:2:16" + told + "_InputX'; did you mean '_Input'?\n" + "templates/list.html:2:31" +
                told + "_CalendarOfMonths'.\n",
            found());
}

TEST_F(CheckedTemplates, TellNamesThatNoPageHas) {
  write("a.asp", kPage);
  write("templates/list.html", "");
  write("templates/sub/other.html", "(#:nobody#) (#;title#)");
  EXPECT_EQ("templates/sub/other.html:1:1: warning: No script of the site has a variable or function 'nobody'.\n",
            found());
}

TEST_F(CheckedTemplates, AreNotDoubtedWhereAScriptMakesItsNames) {
  write("a.asp", std::string(kPage) + "<% page.PutIntoProp(''); page.NewTemplator(prefix); %>");
  write("templates/list.html", "(#;anything#) (#%Anything#)");
  EXPECT_EQ("", found());
  write("a.asp", std::string(kPage) + "<% page.NewTemplator('OnRow_'); function OnRow_Cell() {} %>");
  write("templates/list.html", "(#%Cell#) (#%Cel#)");
  EXPECT_EQ(
      "templates/list.html:1:11: warning: The script of \"/a.asp\", which draws this template, has no function "
      "'OnDraw_Cel'; did you mean 'OnRow_Cell'?\n",
      found());
}

TEST_F(CheckedTemplates, ThatThereAreNotAreTold) {
  write("a.asp", kPage);
  write("templates/List.html", "(#`prat#) (#`LIST#)");
  EXPECT_EQ(
      "a.asp:2:103: warning: There is no template \"/templates/list.html\"; in other letter case there is "
      "\"/templates/List.html\".\n"
      "templates/List.html:1:1: warning: There is no template 'prat' beside this one.\n"
      "templates/List.html:1:11: warning: There is no template 'LIST' beside this one; in other letter case there is "
      "\"/templates/List.html\".\n",
      found());
}

TEST_F(CheckedTemplates, OfAnyContentComeToAnEnd) {
  std::string opens, closes, escapes(300'000, '^');
  for (int i = 0; i < 100'000; ++i) (opens += "(#%a|", closes += "#)");
  write("templates/a.html", opens);
  write("templates/b.html", opens + closes);
  write("templates/c.html", closes);
  write("templates/d.html", escapes + "(#" + escapes);
  write("templates/e.html", "<a" + std::string(300'000, ' ') + "href =" + std::string(300'000, '='));
  EXPECT_NE("", found());
}

TEST_F(CheckedTemplates, PagesAndDocumentsMayNotLinkToProtectedFiles) {
  write("a.asp",
        "<a href=\"inc/secret.inc?x=1\">\n<img src='/templates/a.png'> <a href=\"<%= x %>/a.inc\">"
        "<form action=App_Data/x.html> <a href=\"https://example.org/a.inc\"> <% var s = 1; s.src = \"a.inc\"; %>");
  write("b.html",
        "<p>\n<a HREF=\"../%2Egit/config\"> <a data-href=\"a.inc\"> <a href=\"#a.inc\"> <a href=\"ok.html\">");
  write("templates/c.html", "<a href=\"(#?x#)a.inc\"> <script src=\"web.config\">");
  EXPECT_EQ(
      "a.asp:1:10: warning: This link leads to what is never served: 'secret.inc' is a protected name.\n"
      "a.asp:2:11: warning: This link leads to what is never served: 'templates' is a protected name.\n"
      "a.asp:2:68: warning: This link leads to what is never served: 'App_Data' is a protected name.\n"
      "b.html:2:10: warning: This link leads to what is never served: '.git' is a protected name.\n"
      "templates/c.html:1:37: warning: This link leads to what is never served: 'web.config' is a protected name.\n",
      found());
}

}  // namespace
