// What a function leads to: its constructor, which makes code of text, and its caller.
#include "zelto/script/world/kept_world_fixture.h"

#include "script/world/world.h"

namespace test {
namespace {

class FunctionLinks : public KeptWorldTest {
 protected:
  // With "k", which is "constructor", and a function "f".
  static std::wstring with_constructor(const std::wstring& script) {
    return L"var k = ['constr', 'uctor'].join(''), f = function () {};\n" + script;
  }

  // What a world that is kept has is as it is in a fresh one, which has the engine's own.
  void same_in_all_worlds(const std::wstring& script) {
    const std::string first = ask(page_of(script));
    EXPECT_FALSE(first.starts_with(' ')) << "failed:" << first;
    always(first, script);
  }
};

TEST_F(FunctionLinks, ShowCodeThatIsMadeOfTextWhatThePageDeclares) {
  always("numberfunctionnumbernumberfunction",
         with_constructor(L"var v = 1; function g() {} let l = 2; const c = 3; class K {}\n"
                          L"Response.Write(f[k]('return typeof v + typeof g + typeof l + typeof c + typeof K')())"));
  always("number", with_constructor(L"var v = 1, g = function* () {};"
                                    L"Response.Write(g[k]('yield typeof v')().next().value)"));
  always("number", with_constructor(L"var v = 1, g = async function () {}; g[k]('Response.Write(typeof v)')()"));
  always("number",
         with_constructor(L"var v = 1, g = async function* () {}; g[k]('Response.Write(typeof v)')().next()"));
  always("number", with_constructor(L"var v = 1; Response.Write(new f[k]('return typeof v')())"));
  always("number", with_constructor(L"var v = 1, O = Object; Response.Write(O[k]('return typeof v')())"));
  always("number", with_constructor(L"let v = 1; this.own = 1; Response.Write(f[k]('return typeof v')())"));
}

TEST_F(FunctionLinks, LetCodeThatIsMadeOfTextChangeIt) {
  always("5677", with_constructor(L"var v = 1; let l = 2; f[k]('v = 5; l = 6')(); Response.Write(v + '' + l);"
                                  L"v = 7; Response.Write(v + f[k]('return String(v)')())"));
  always("5", with_constructor(L"var v = 1; this.own = 1; f[k]('v = 5')(); Response.Write(v)"));
  always("TypeError", with_constructor(L"const c = 1; try { f[k]('c = 2')() } catch (e) { Response.Write(e.name) }"));
  always("ReferenceError", with_constructor(L"try { f[k]('l')() } catch (e) { Response.Write(e.name) } let l = 1"));
  always("l",
         with_constructor(L"let l = 1; f[k]('for (var n in this) if (n === \"l\") throw n')(); Response.Write('l')"));
}

TEST_F(FunctionLinks, LeadToConstructorsThatLookLikeTheLanguages) {
  for (const wchar_t* function :
       {L"function () {}", L"async function () {}", L"function* () {}", L"async function* () {}"}) {
    const std::wstring script =
        L"var f = " + std::wstring(function) +
        L", F = f.constructor, P = Object.getPrototypeOf(f);\n"
        L"Response.Write([F.name, F.length, String(F), f instanceof F, f instanceof Function, F === P.constructor, "
        L"F.prototype === P, Object.getOwnPropertyNames(F), JSON.stringify(Object.getOwnPropertyDescriptors(F)), "
        L"JSON.stringify(Object.getOwnPropertyDescriptor(P, 'constr' + 'uctor')), String(Object.getPrototypeOf(F)),"
        L"Function.prototype.constructor === F, Object.getPrototypeOf(F) === Function.prototype.constructor, "
        L"String(F('a', 'b', '')), F('a', 'b', '').length, F() instanceof F, new F() instanceof F].join('; '));";
    same_in_all_worlds(script);
  }
  always("true", L"var F = (function () {}).constructor, w = this; Response.Write(String(w['Func' + 'tion'] === F))");
  same_in_all_worlds(
      L"var F = (function () {}).constructor; var A = class extends F { m() { return 8 } };"
      L"var a = new A('return 7'); Response.Write([a(), a.m(), a instanceof A, a instanceof F,"
      L"Object.getPrototypeOf(a) === A.prototype].join())");
  same_in_all_worlds(
      L"var F = (function () {}).constructor; try { F('(') } catch (e) { Response.Write(e.name + e.message) }");
}

TEST_F(FunctionLinks, LeadToNoCallerThatIsNotThePages) {
  always("null", L"var me = function () { return String(me['cal' + 'ler']) }; Response.Write(me())");
  always("null", L"var c = ['cal', 'ler'].join(''), me = function () { return String(me[c]) }; Response.Write(me())");
  always("true",
         L"var me = function () { return me['cal' + 'ler'] }, of = function () { var x = me(); return x };"
         L"Response.Write(String(of() === of))");
  same_in_all_worlds(
      L"var c = ['cal', 'ler'].join(''), d = Object.getOwnPropertyDescriptor(Function.prototype, c), tell = "
      L"x => Response.Write(String(x) + '; ');\n"
      L"tell(d.get); tell(d.get.name); tell(d.get.length); tell(d.set); tell(d.enumerable);"
      L"tell(d.configurable); tell(Object.getOwnPropertyNames(d.get));\n"
      L"for (var f of [() => 1, Math.max, class {}, 1]) try { tell(d.get.call(f)) } catch (e) { tell(e) }");
}

TEST_F(FunctionLinks, AreOfAPageThatIsCalledAsAScriptIs) {
  same_in_all_worlds(L"\nfunction g() { return new Error().stack }\n Response.Write(g())");
}

TEST_F(FunctionLinks, LeaveTheWorldAloneUntilCodeIsMade) {
  EXPECT_TRUE(is_kept(with_constructor(L"var F = f[k], same = F === Object[k]; let l = 1")));
  EXPECT_TRUE(is_kept(with_constructor(L"this.n = f[k]('return typeof this.k')()")));  // which has its names there
  const std::wstring spoiling = L"let l = 1; this.n = f[k]('return typeof l')()";
  EXPECT_FALSE(is_kept(with_constructor(spoiling)));
  // One of its own, that would be made each time for nothing.
  const ProgramPtr program = page_of(with_constructor(spoiling));
  int own = 0;
  for (int i = 0; i < 8; ++i) {
    ask(program);
    open(program);
    own += realm->world().use() == zelto::script::World::Use::own;
    EXPECT_EQ(Outcome::completed, realm->run(program).kind);
    realm.reset();
  }
  EXPECT_LE(own, 1);
}

}  // namespace
}  // namespace test
