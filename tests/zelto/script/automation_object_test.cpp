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
  // Whoever takes a value gets one; a member that needs arguments is passed on as a function.
  EXPECT_EQ(text(L"(() => { switch (o.ReadText) { case 'everything': return 'value' } })()"), "value");
  EXPECT_EQ(text(L"(v => typeof v)(o.ReadText) + (v => typeof v)(o.Keep)"), "stringfunction");
  EXPECT_EQ(text(L"(() => { if (o.Inner) return 'an object'; else return 'nothing' })()"), "nothing");
  EXPECT_EQ(text(L"(() => { while (o.Act) return 'a value'; return 'nothing' })()"), "nothing");
}

TEST_F(AutomationObject, IsUsedByPagesWrittenForOlderEngines) {
  EXPECT_EQ(text(L"(() => { with (o) { Name = 'n'; return NAME + 010 } })() // <!-- a comment\n"), "n8");
  must_run(L"<!-- the oldest way to hide a script\nvar hidden = 1\n//-->");
  EXPECT_EQ(text(L"hidden"), "1");
  EXPECT_EQ(text(L"new ActiveXObject('Scripting.Dictionary').Count"), "0");
  EXPECT_EQ(error_of(L"new ActiveXObject('No.Such')").substr(0, 7), "Error: ");
}

TEST_F(AutomationObject, SaysWhichMemberIsMissing) {
  EXPECT_EQ(error_of(L"\no.Nothing"),
            "Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:2");
  EXPECT_EQ(error_of(L"o.Nothing = 1"),
            "Error: Object doesn't support this property or method: 'Nothing' (0x80020006) at /site/page.asp:1");
}

TEST_F(AutomationObject, IsIndexedByNumbers) {
  must_run(L"o[3] = 'three'");
  EXPECT_EQ(text(L"o[3] + o('3')"), "threethree");
}

TEST_F(AutomationObject, StandsForItsDefaultValueInTextAndSums) {
  auto field = korlib::make<Field>();
  realm->set_object(L"field", field.get());
  field->value = CComVariant(LONG{6});
  EXPECT_EQ(text(L"field + '' + field * 2 + `${field}` + (field == 6) + field.toString() + field.valueOf() + field()"),
            "6126true666");
  field->value = CComVariant();
  EXPECT_EQ(text(L"field + '|' + String(field)"), "undefined|undefined");
  // A field of a field, and an object without a value of its own.
  auto outer = korlib::make<Field>();
  outer->value = CComVariant(static_cast<IDispatch*>(field.get()));
  field->value = CComVariant(L"inner");
  realm->set_object(L"outer", outer.get());
  EXPECT_EQ(text(L"outer + ''"), "inner");
  EXPECT_EQ(text(L"o + '' + o.toString()"), "[object Object][object Object]");
}

TEST_F(AutomationObject, SetsTheValueOfWhatACallGives) {
  auto field = korlib::make<Field>();
  auto row = korlib::make<Row>();
  row->field = field.get();
  realm->set_object(L"rs", row.get());
  must_run(L"rs('a') = 5; rs.Fields('a') += 2");
  EXPECT_EQ(field->value.lVal, 7);
}

TEST_F(AutomationObject, AnswersTheLanguagesOwnQuestions) {
  EXPECT_EQ(text(L"JSON.stringify({ a: o.then, b: o.toJSON })"), "{}");
  EXPECT_EQ(text(L"typeof o.hasOwnProperty + typeof o.constructor + Array.isArray(o)"), "functionfunctionfalse");
}

TEST_F(AutomationObject, IsSteppedThrough) {
  must_run(L"o('a') = 1; o('b') = 2");
  EXPECT_EQ(text(L"[...o].join() + '|' + Array.from(o).length"), "a,b|2");
  EXPECT_EQ(text(L"(() => { var s = ''; for (var e = new Enumerator(o); !e.atEnd(); e.moveNext()) s += e.item(); "
                 L"e.moveFirst(); return s + e.item() })()"),
            "aba");
  EXPECT_EQ(text(L"(() => { var s = ''; for (var k in o) s += k + o[k]; return s })()"), "a1b2");
  EXPECT_EQ(text(L"(() => { var s = ''; for (var e = new Enumerator([7, 8]); !e.atEnd(); e.moveNext()) s += e.item(); "
                 L"return s + new Enumerator(null).atEnd() + e.item() })()"),
            "78trueundefined");
}

TEST_F(AutomationObject, PutsThroughTheObjectThatAMemberGives) {
  other->inner = probe.get();
  must_run(L"p.Inner('k') = 5; p.Inner('k') += 1");
  EXPECT_EQ(probe->items[L"k"].lVal, 6);
  other->inner.reset();
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
