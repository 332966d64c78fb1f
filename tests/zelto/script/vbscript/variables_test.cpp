// Variables, references, loops and the life of instances, as compiled programs have them.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

class VbVariables : public VbLibraryTest {
 protected:
  // What a For loop counts, joined.
  std::string counted(std::wstring_view limits) {
    return shown(
        L"(() => { const c = forn(" + std::wstring(limits) +
        L"), all = []; for (let n = c.at; c.step < 0 ? n >= c.to : n <= c.to; n += c.step)"
        L" all.push(c.box === undefined ? n : c.box(n)); return array(...all, all.length && typename(all[0])); "
        L"})()");
  }
  // An instance with an end, told in `said`, of a program that counts references.
  std::string ended(std::wstring_view statements) {
    return shown(
        L"(() => { let said = ''; class C extends Instance { class_initialize() { said += 'begin '; }"
        L" class_terminate() { said += 'end '; } } count(); const x = make(C); " +
        std::wstring(statements) + L"; return said; })()");
  }
};

TEST_F(VbVariables, AreValuesOrObjects) {
  expect({
      {L"val(5)", "Integer 5"},
      {L"val(nothing)", "error 91"},
      {L"setv(5)", "error 424"},
      {L"setv(undefined)", "error 424"},
      {L"setv(array(1))", "error 424"},
      {L"setv(nothing)", "Nothing"},
      {L"num('12')", "Integer 12"},
      {L"num(null)", "error 94"},
      {L"num('x')", "error 13"},
  });
}

TEST_F(VbVariables, AreGivenByReferenceOrByValue) {
  expect({
      {L"(() => { let n = 1; const r = ref(() => n, v => { n = v; }); r.v = 2; return array(n, r.v); })()",
       "Variant() 2|2"},
      {L"(() => { const a = array(1, 2), r = refix(a, 1); r.v = 5; return a; })()", "Variant() 1|5"},
      {L"(() => { const a = array(1, 2), r = refix(a, 1); r.v = nothing; return is(ix(a, 1), nothing); })()",
       "Boolean True"},
      {L"refix(array(1), 3).v", "error 9"},
      {L"arg(5).v", "Integer 5"},
      {L"(() => { const r = temp(5); return arg(r) === r; })()", "Boolean True"},
      {L"own(temp(5))", "Integer 5"},
      {L"(() => { const a = array(1), b = own(a); putix(b, 2, 0); return a; })()", "Variant() 1"},
  });
}

TEST_F(VbVariables, AreCountedByTheKindOfTheFirstValue) {
  EXPECT_EQ("Variant() 1|2|3|Integer", counted(L"1, 3"));
  EXPECT_EQ("Variant() 3|1|Integer", counted(L"3, '1', -2"));
  EXPECT_EQ("Variant() 0", counted(L"2, 1"));
  EXPECT_EQ("Variant() 0|0.5|1|Double", counted(L"0, 1, 0.5"));
  EXPECT_EQ("Variant() 2024-02-29|2024-03-01|Date", counted(L"dateserial(2024, 2, 29), dateserial(2024, 3, 1)"));
  EXPECT_EQ("error 94", counted(L"null, 1"));
  EXPECT_EQ("error 13", counted(L"1, 'x'"));
}

// The statement that makes it has it until it is drained.
TEST_F(VbVariables, ThatHeldAnInstanceEndItWithTheLastReference) {
  EXPECT_EQ("String begin ", ended(L"hold(x); drop(x)"));
  EXPECT_EQ("String begin end ", ended(L"drain(0)"));
  EXPECT_EQ("String begin ", ended(L"hold(x); hold(x); drain(0); drop(x)"));
  EXPECT_EQ("String begin end ", ended(L"hold(x); hold(x); drain(0); drop(x); drop(x)"));
  EXPECT_EQ("String begin end ", ended(L"hold(x); drain(0); drop(x); terminate()"));
  EXPECT_EQ("String begin end ", ended(L"hold(x); terminate(); terminate()"));
  EXPECT_EQ("String begin ", ended(L"hold(nothing); drop(5); drop(undefined)"));
}

TEST_F(VbVariables, HoldInstancesToTheEndWhereNobodyCounts) {
  EXPECT_EQ("String end ", shown(L"(() => { let said = ''; class C extends Instance { class_terminate() { said += "
                                 L"'end '; } } const x = make(C); hold(x); drop(x); drop(x); drain(0); "
                                 L"const before = said; terminate(); return before + said; })()"));
}

TEST_F(VbVariables, OfOnePageAreForgottenByTheNext) {
  expect({
      {L"(setlocale(1031), rnd(), caught(new Error('x')), 1)", "Integer 1"},
      {L"array(getlocale(), rnd(), get(err, 'Number'))", "Variant() 2048|0.7055475|0"},
  });
}

}  // namespace
}  // namespace test
