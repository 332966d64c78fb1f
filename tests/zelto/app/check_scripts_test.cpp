#include "app/runtime.h"
#include "zelto/app/check_fixture.h"

namespace {

class CheckedScripts : public test::CheckedSite {
 protected:
  void SetUp() override { zelto::set_up_runtime(); }
};

TEST_F(CheckedScripts, NameMembersThatTheHostLacks) {
  write("a.asp",
        "<% Response.Wrte(1);\n"
        "Server.MapPth('x'); session.Timout = 5;\n"
        "Application.Contents.Remove('a'); Request.Form('x').Foo();\n"
        "if (Request.Bas) Response.Flush; %>\n"
        "<%= Request.QuerryString(\"a\") %>");
  EXPECT_EQ(
      "a.asp:1:13: error: Response has no member 'Wrte'; did you mean 'Write'?\n"
      "a.asp:2:8: error: Server has no member 'MapPth'; did you mean 'MapPath'?\n"
      "a.asp:2:29: error: Session has no member 'Timout'; did you mean 'Timeout'?\n"
      "a.asp:4:13: warning: Request has no member 'Bas'.\n"
      "a.asp:5:13: error: Request has no member 'QuerryString'; did you mean 'QueryString'?\n",
      found());
}

TEST_F(CheckedScripts, MayHaveObjectsOfTheirOwnByThatName) {
  write("a.asp",
        "<% function f(request) { return request.go(); }\nvar session = {}; session.x = 1; server = 2; server.y();\n"
        "list.forEach(response => response.close()); page.Request.foo(); var a = { Server: 1 }; %>");
  EXPECT_EQ("", found());
}

TEST_F(CheckedScripts, NameClassesThatNobodyRegistered) {
  write("a.asp",
        "<% var a = Server.CreateObject(\"ADODB.Conection\"), b = new ActiveXObject('Scripting.Dictionary');\n"
        "Server.CreateObject('Acme.Thing'); Server.CreateObject(name); Server.CreateObject(\"mirt.utility\"); %>");
  EXPECT_EQ(
      "a.asp:1:32: error: No class is registered as 'ADODB.Conection'; did you mean 'ADODB.Connection'?\n"
      "a.asp:2:21: error: No class is registered as 'Acme.Thing'.\n",
      found());
}

TEST_F(CheckedScripts, AreReadInIncludesToo) {
  write("inc/a.inc", "\n<% Response.Nope(); %>");
  write("a.asp", "<!-- #include file=\"inc/a.inc\" --><% Response.Nope(); %>");
  EXPECT_EQ(
      "a.asp:1:47: error: Response has no member 'Nope'.\n"
      "inc/a.inc:2:13: error: Response has no member 'Nope'.\n",
      found());
}

}  // namespace
