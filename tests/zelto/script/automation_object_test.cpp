#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using AutomationObject = ScriptTest;
using zelto::script::Outcome;

TEST_F(AutomationObject, HasMembersInAnyLetterCase) {
  EXPECT_EQ("probeprobeprobe", text(L"o.Name + o.NAME + o.name"));
  must_run(L"o.nAmE = 'other'; o.close(); o.CLOSE()");
  EXPECT_EQ(L"other", probe->name.view());
  EXPECT_EQ(2, probe->closed);
}

TEST_F(AutomationObject, GivesAFunctionForAMethod) {
  EXPECT_EQ("function", text(L"typeof o.Keep"));
  must_run(L"var keep = o.Keep; keep(5)");
  EXPECT_EQ(5, probe->kept.lVal);
}

TEST_F(AutomationObject, IsCalledForItsDefaultMember) {
  must_run(L"o('a') = 1; o('b') = o('a') + 1; o('b') += 10; o('b')++; ++o('b'); o.Item('c') = 'x'");
  EXPECT_EQ("1,14,undefined,x", text(L"o('a') + ',' + o('b') + ',' + o.item('C') + ',' + o('c')"));
}

TEST_F(AutomationObject, RunsMethodsThatAreNamedWithoutParentheses) {
  must_run(L"o.Close;\no.Close\no.Close\nif (true) o.Close; else o.Close");
  EXPECT_EQ(4, probe->closed);
  must_run(L"var t = o.ReadText; var u = o.ReadText(2); function f() { return o.ReadText }\n var w = f()");
  EXPECT_EQ("everythingxxeverythingeverything!", text(L"t + u + w + (o.ReadText + '!')"));
  must_run(L"o.Keep(p.ReadText)");
  EXPECT_EQ(L"everything", korlib::view_of(probe->kept.bstrVal));
  // Whoever takes a value gets one; a member that needs arguments is passed on as a function.
  EXPECT_EQ("value", text(L"(() => { switch (o.ReadText) { case 'everything': return 'value' } })()"));
  EXPECT_EQ("stringfunction", text(L"(v => typeof v)(o.ReadText) + (v => typeof v)(o.Keep)"));
  EXPECT_EQ("nothing", text(L"(() => { if (o.Inner) return 'an object'; else return 'nothing' })()"));
  EXPECT_EQ("nothing", text(L"(() => { while (o.Act) return 'a value'; return 'nothing' })()"));
}

TEST_F(AutomationObject, IsUsedByPagesWrittenForOlderEngines) {
  EXPECT_EQ("n8", text(L"(() => { with (o) { Name = 'n'; return NAME + 010 } })() // <!-- a comment\n"));
  must_run(L"<!-- the oldest way to hide a script\nvar hidden = 1\n//-->");
  EXPECT_EQ("1", text(L"hidden"));
  EXPECT_EQ("0", text(L"new ActiveXObject('Scripting.Dictionary').Count"));
  EXPECT_EQ("Error: ", error_of(L"new ActiveXObject('No.Such')").substr(0, 7));
}

TEST_F(AutomationObject, SaysWhichMemberIsMissing) {
  EXPECT_EQ("Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:2",
            error_of(L"\no.Nothing"));
  EXPECT_EQ("Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:1",
            error_of(L"o.Nothing = 1"));
}

TEST_F(AutomationObject, IsIndexedByNumbers) {
  must_run(L"o[3] = 'three'");
  EXPECT_EQ("threethree", text(L"o[3] + o('3')"));
}

TEST_F(AutomationObject, StandsForItsDefaultValueInTextAndSums) {
  auto field = korlib::make<Field>();
  realm->set_object(L"field", field.get());
  field->value = CComVariant(LONG{6});
  EXPECT_EQ("6126true666",
            text(L"field + '' + field * 2 + `${field}` + (field == 6) + field.toString() + field.valueOf() + field()"));
  field->value = CComVariant();
  EXPECT_EQ("undefined|undefined", text(L"field + '|' + String(field)"));
  // A field of a field, and an object without a value of its own.
  auto outer = korlib::make<Field>();
  outer->value = CComVariant(static_cast<IDispatch*>(field.get()));
  field->value = CComVariant(L"inner");
  realm->set_object(L"outer", outer.get());
  EXPECT_EQ("inner", text(L"outer + ''"));
  EXPECT_EQ("[object Object][object Object]", text(L"o + '' + o.toString()"));
}

TEST_F(AutomationObject, SetsTheValueOfWhatACallGives) {
  auto field = korlib::make<Field>();
  auto row = korlib::make<Row>();
  row->field = field.get();
  realm->set_object(L"rs", row.get());
  must_run(L"rs('a') = 5; rs.Fields('a') += 2");
  EXPECT_EQ(7, field->value.lVal);
}

TEST_F(AutomationObject, AnswersTheLanguagesOwnQuestions) {
  EXPECT_EQ("{}", text(L"JSON.stringify({ a: o.then, b: o.toJSON })"));
  EXPECT_EQ("functionfunctionfalse", text(L"typeof o.hasOwnProperty + typeof o.constructor + Array.isArray(o)"));
}

TEST_F(AutomationObject, IsSteppedThrough) {
  must_run(L"o('a') = 1; o('b') = 2");
  EXPECT_EQ("a,b|2", text(L"[...o].join() + '|' + Array.from(o).length"));
  EXPECT_EQ("aba",
            text(L"(() => { var s = ''; for (var e = new Enumerator(o); !e.atEnd(); e.moveNext()) s += e.item(); "
                 L"e.moveFirst(); return s + e.item() })()"));
  EXPECT_EQ("a1b2", text(L"(() => { var s = ''; for (var k in o) s += k + o[k]; return s })()"));
  EXPECT_EQ("78trueundefined",
            text(L"(() => { var s = ''; for (var e = new Enumerator([7, 8]); !e.atEnd(); e.moveNext()) s += e.item(); "
                 L"return s + new Enumerator(null).atEnd() + e.item() })()"));
}

TEST_F(AutomationObject, PutsThroughTheObjectThatAMemberGives) {
  other->inner = probe.get();
  must_run(L"p.Inner('k') = 5; p.Inner('k') += 1");
  EXPECT_EQ(6, probe->items[L"k"].lVal);
  other->inner.reset();
}

TEST_F(AutomationObject, EndsThePage) {
  EXPECT_EQ(
      Outcome::stopped,
      run(L"Response.Write('a'); try { Response.End() } catch (e) { Response.Write('b') } Response.Write('c')").kind);
  EXPECT_EQ("a", narrow(page->text));
  EXPECT_EQ(Outcome::stopped, run(L"try { Response.End() } catch (e) { while (true) {} }").kind);
  EXPECT_EQ(Outcome::stopped, run(L"Response.End;").kind);
  must_run(L"Response.Write('d')");
  EXPECT_EQ("ad", narrow(page->text));
}

}  // namespace
}  // namespace test
