#include "zelto/script/script_test.h"

namespace test {
namespace {

using AutomationObject = ScriptTest;
using zelto::script::Outcome;

TEST_F(AutomationObject, HasMembersInAnyLetterCase) {
  EXPECT_EQ(text(L"o.Name + o.NAME + o.name"), "probeprobeprobe");
  must_run(L"o.nAmE = 'other'; o.close(); o.CLOSE()");
  EXPECT_EQ(probe->name.view(), L"other");
  EXPECT_EQ(probe->closed, 2);
}

TEST_F(AutomationObject, GivesAFunctionForAMethod) {
  EXPECT_EQ(text(L"typeof o.Keep"), "function");
  must_run(L"var keep = o.Keep; keep(5)");
  EXPECT_EQ(probe->kept.lVal, 5);
}

TEST_F(AutomationObject, IsCalledForItsDefaultMember) {
  must_run(L"o('a') = 1; o('b') = o('a') + 1; o('b') += 10; o('b')++; ++o('b'); o.Item('c') = 'x'");
  EXPECT_EQ(text(L"o('a') + ',' + o('b') + ',' + o.item('C') + ',' + o('c')"), "1,14,undefined,x");
}

TEST_F(AutomationObject, RunsMethodsThatAreNamedWithoutParentheses) {
  must_run(L"o.Close;\no.Close\no.Close\nif (true) o.Close; else o.Close");
  EXPECT_EQ(probe->closed, 4);
  must_run(L"var t = o.ReadText; var u = o.ReadText(2); function f() { return o.ReadText }\n var w = f()");
  EXPECT_EQ(text(L"t + u + w + (o.ReadText + '!')"), "everythingxxeverythingeverything!");
  must_run(L"o.Keep(p.ReadText)");
  EXPECT_EQ(korlib::view_of(probe->kept.bstrVal), L"everything");
}

TEST_F(AutomationObject, SaysWhichMemberIsMissing) {
  EXPECT_EQ(error_of(L"\no.Nothing"),
            "Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:2");
  EXPECT_EQ(error_of(L"o.Nothing = 1"),
            "Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:1");
}

TEST_F(AutomationObject, EndsThePage) {
  EXPECT_EQ(
      run(L"Response.Write('a'); try { Response.End() } catch (e) { Response.Write('b') } Response.Write('c')").kind,
      Outcome::stopped);
  EXPECT_EQ(narrow(page->text), "a");
  EXPECT_EQ(run(L"try { Response.End() } catch (e) { while (true) {} }").kind, Outcome::stopped);
  EXPECT_EQ(run(L"Response.End;").kind, Outcome::stopped);
  must_run(L"Response.Write('d')");
  EXPECT_EQ(narrow(page->text), "ad");
}

}  // namespace
}  // namespace test
