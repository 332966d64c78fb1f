// What functions say of themselves: Function.prototype.toString.
#include <memory>

#include "zelto/script/world/kept_world_fixture.h"

namespace test {
namespace {

class FunctionText : public KeptWorldTest {};

TEST_F(FunctionText, IsThePagesSourceWhoeverAsksForIt) {
  const std::wstring function = L"function f(a) { o.Close(); v = o.Name; throw a.Item }";
  for (const wchar_t* way :
       {L"String(f)", L"f + ''", L"`${f}`", L"f.toString()", L"f.toLocaleString()", L"[f].join()",
        L"Reflect.apply(Function.prototype.toString, f, [])", L"Function.prototype.toString.call(f)"}) {
    always(narrow(function), function + L"\nResponse.Write(" + way + L")");
  }
}

TEST_F(FunctionText, IsThatOfEachKindOfFunction) {
  always("m() { o.Close() }", L"var x = { m() { o.Close() } }; Response.Write(String(x.m))");
  always("get g() { return o.Item }",
         L"var x = { get g() { return o.Item } }; Response.Write(String(Object.getOwnPropertyDescriptor(x, 'g').get))");
  always("x => x.Item", L"var f = x => x.Item; Response.Write(String(f))");
  always("class C { m() { o.Close() } }", L"class C { m() { o.Close() } }\nResponse.Write(String(C))");
  always("async *g() { o.Close() }", L"var x = { async *g() { o.Close() } }; Response.Write(String(x.g))");
}

// Functions of different sources would otherwise come to show that of the first.
TEST_F(FunctionText, TellsSourcesApartThatDifferInBlanks) {
  const std::wstring functions[] = {L"() => Response. Write(1)", L"() => Response .Write(1)", L"() => o.Name( )",
                                    L"() => o.Name ()",          L"() => o.Name()",           L"() => o[0].Name( )",
                                    L"() => o[0].Name ()",       L"() => o[0]. Name()"};
  std::wstring list;
  std::string texts;
  for (const std::wstring& function : functions) {
    list += function + L", ";
    texts += narrow(function) + "|";
  }
  always(texts, L"Response.Write([" + list + L"''].join('|'))");
}

TEST_F(FunctionText, IsAskedForByAFunctionThatLooksLikeTheLanguages) {
  always(
      "toString,0,length+name,{\"writable\":true,\"enumerable\":false,\"configurable\":true},false,"
      "function toString() {\n    [native code]\n}",
      L"var t = Function.prototype.toString; Response.Write([t.name, t.length, "
      L"Object.getOwnPropertyNames(t).join('+'), "
      L"JSON.stringify(Object.getOwnPropertyDescriptor(Function.prototype, 'toString')), 'prototype' in t, String(t)]"
      L".join())");
  always("TypeError: Type error 1",
         L"try { Function.prototype.toString.call({}) }\n"
         L"catch (e) { Response.Write(e + ' ' + e.stack.match(/toString@\\[native code\\]/g).length) }");
  always(
      "TypeError,TypeError,TypeError",
      L"Response.Write([1, null, undefined].map(x => { try { Function.prototype.toString.call(x) } catch (e) { return "
      L"e.name } }).join())");
  always("TypeError", L"try { new Function.prototype.toString() } catch (e) { Response.Write(e.name) }");
}

TEST_F(FunctionText, IsThatOfTheLanguageForFunctionsOfTheHost) {
  const std::string native = "() {\n    [native code]\n}";
  always("function for" + native, L"Response.Write(String(Symbol.for))");
  always("function Enumerator" + native, L"Response.Write(String(Enumerator))");
  always("function " + native, L"Response.Write(String(CollectGarbage))");
  always("function max" + native, L"Response.Write(String(Math.max))");
  always("function f" + native, L"function f() { o.Close() } Response.Write(String(f.bind()))");
}

TEST_F(FunctionText, IsTheEnginesForWhatIsMadeOfText) {
  always("function () { o.Close(); }", L"Response.Write(String(eval('(function () { o.Close(); })')))");
  always("function anonymous(a) {\nreturn a.Item\n}",
         L"Response.Write(String(new Function('a', 'return a.Item')).replace('a\\n)', 'a)'))");
}

TEST_F(FunctionText, IsThePagesToReplace) {
  always("functionmine",
         L"function f() { o.Close() } Response.Write(String(f).slice(0, 8));"
         L"Function.prototype.toString = function () { return 'mine' }; Response.Write(String(f))");
  EXPECT_FALSE(is_kept(L"Function.prototype.toString = function () { return 'mine' }"));
  EXPECT_FALSE(is_kept(L"Function.prototype.toString.asked = 1"));
  EXPECT_TRUE(is_kept(L"var t = String(function () { o.Close() })"));
}

TEST_F(FunctionText, IsOfThePageThatHasTheFunctionWhereOneExecutesAnother) {
  const ProgramPtr inner = page_of(L"function f() { o.Inner; }\nResponse.Write(String(f))", "/site/inner.asp");
  const ProgramPtr outer = page_of(L"function f() { o.Close(); }\no.Act(); Response.Write(String(f))");
  probe->action = [&] { return run_within(inner); };
  for (int i = 0; i < 4; ++i) EXPECT_EQ("function f() { o.Inner; }function f() { o.Close(); }", ask(outer)) << i;
}

TEST_F(FunctionText, IsKnownAsLongAsTheRequest) {
  const ProgramPtr program = page_of(L"function later() { o.Name; Response.Write(String(later)) }");
  for (int i = 0; i < 4; ++i) {
    const bool is_only = i < 3;  // that runs in its realm
    page->text.clear();
    open(is_only ? program : nullptr);
    ASSERT_EQ(Outcome::completed, realm->run(program).kind) << i;
    if (!is_only) {
      ASSERT_EQ(Outcome::completed, realm->run(page_of(L"var next = 1", "/site/next.asp")).kind);
    }
    ASSERT_EQ(Outcome::completed, realm->call(L"later").kind) << i;
    EXPECT_EQ(L"function later() { o.Name; Response.Write(String(later)) }", page->text) << i;
    realm.reset();
  }
}

TEST_F(FunctionText, KeepsNoPageThatIsGone) {
  ProgramPtr program = page_of(L"function f() { o.Close(); } Response.Write(String(f))");
  const std::weak_ptr<const Program> kept = program;
  for (int i = 0; i < 4; ++i) EXPECT_EQ("function f() { o.Close(); }", ask(program));
  program.reset();
  EXPECT_TRUE(kept.expired());
}

}  // namespace
}  // namespace test
