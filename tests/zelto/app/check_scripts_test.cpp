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

// The names are those that the objects have, of the host's classes and of the component's.
TEST_F(CheckedScripts, NameMembersThatTheirObjectsLack) {
  write("a.asp",
        "<% var page = Server.CreateObject('Mirt'); page.Proces(); page.process();\n"
        "var n = 1, d = new ActiveXObject(\"Scripting.Dictionary\"); d.Ad('a', 1);\n"
        "d.CompareMod = 1; n = d.Cuont + d.Count;\n"
        "let conn; conn = server.createobject('adodb.connection'); conn.Opn('x');\n"
        "function f() { var rs = conn.Execute('select 1'); rs.MoveNex(); rs.Close(); rs = null; }\n"
        "Server.CreateObject('ADODB.Stream')\n.Opne(); Server.CreateObject('mirt.utility').Nothing();\n"
        "new ActiveXObject('Scripting.Dictionary').RemoveAl(); d.toString();\n"
        "var re = Server.CreateObject('VBScript.RegExp'); re.Patern = 'a'; re.multiline = true; re.Tset('a'); %>");
  EXPECT_EQ(
      "a.asp:1:49: error: Mirt has no member 'Proces'; did you mean 'Process'?\n"
      "a.asp:2:61: error: Dictionary has no member 'Ad'; did you mean 'Add'?\n"
      "a.asp:3:3: error: Dictionary has no member 'CompareMod'; did you mean 'CompareMode'?\n"
      "a.asp:3:25: warning: Dictionary has no member 'Cuont'; did you mean 'Count'?\n"
      "a.asp:4:64: error: Connection has no member 'Opn'; did you mean 'Open'?\n"
      "a.asp:5:54: error: Recordset has no member 'MoveNex'; did you mean 'MoveNext'?\n"
      "a.asp:7:2: error: Stream has no member 'Opne'; did you mean 'Open'?\n"
      "a.asp:7:46: error: Mirt.Utility has no member 'Nothing'.\n"
      "a.asp:8:43: error: Dictionary has no member 'RemoveAl'; did you mean 'RemoveAll'?\n"
      "a.asp:9:53: error: RegExp has no member 'Patern'; did you mean 'Pattern'?\n"
      "a.asp:9:91: error: RegExp has no member 'Tset'; did you mean 'Test'?\n",
      found());
}

// Whatever the include that there is not may do with them.
TEST_F(CheckedScripts, AreOfTheObjectsThatAPageMakesAlsoWithoutAnInclude) {
  write("a.asp",
        "<!-- #include file=\"none.inc\" -->\n"
        "<% var d = Server.CreateObject('Scripting.Dictionary'); d.Ad(1, 2);\n"
        "Server.CreateObject('Mirt').Proces(); %>");
  EXPECT_EQ(
      "a.asp:1:21: error: The include file \"none.inc\" was not found.\n"
      "a.asp:2:59: error: Dictionary has no member 'Ad'; did you mean 'Add'?\n"
      "a.asp:3:29: error: Mirt has no member 'Proces'; did you mean 'Process'?\n",
      found());
}

TEST_F(CheckedScripts, MayHaveVariablesThatAreNotOnlyOfOneClass) {
  const std::string_view scripts[] = {
      "function f(d) { d.Go(); }",                                  // a parameter
      "function f({ d }) { d.Go(); }",                              //
      "var f = (d) => { d.Go(); }, g = d => { d.Go(); };",          //
      "var o = { f(d) { d.Go(); } }; class C { m(d) { d.Go(); } }"  //
      "var f = function ([d]) { d.Go(); };",                        //
      "try { } catch (d) { d.Go(); }",
      "function f() { var d = {}; d.Go(); }",  // declared again
      "function f() { let x, d = g(); d.Go(); }",
      "function f() { d.Go(); function d() {} }",
      "d = {}; d.Go();",  // another value
      "d = Server.CreateObject('ADODB.Stream'); d.Go();",
      "d = Server.CreateObject(name); d.Go();",
      "d = Server.CreateObject('Scripting.Dictionary') || o; d.Go();",
      "d = Server.CreateObject('Scripting.Dictionary').Item('a'); d.Go();",
      "d = my.Server.CreateObject('Scripting.Dictionary'); d.Go();",
      "d ||= o; d.Go();",
      "[d] = o; d.Go();",
      "({ x: d } = o); d.Go();",
      "({ x: [d] } = o); d.Go();",
      "for (d of o) d.Go();",
      "for (var d in o) d.Go();",
      "for (var k in d) d.name;",  // which makes its keys members
      "this.d = o; d.Go();",
      "with (o) { d.Go(); }",
      "eval('d = o'); d.Go();",
      "this[n] = o; d.Go();",
      "page.PutIntoProp('d', false); d.Go();",
      "o.d.Go(); o = { d: 1 }; x = o ? d : 1;",
  };
  for (const std::string_view script : scripts) {
    write("a.asp", "<% var d = Server.CreateObject('Scripting.Dictionary'); " + std::string(script) + " %>");
    EXPECT_EQ("", found()) << script;
  }
  write("a.asp",
        "<% var Server = {}, page = Server.CreateObject('Mirt'); page.Go();\n"
        "function ActiveXObject() {} var d = new ActiveXObject('Mirt'); d.Go(); %>");
  EXPECT_EQ("", found());
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
