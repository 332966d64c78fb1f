#include "language/page_scope.h"

#include <gtest/gtest.h>
#include <korlib_host/unicode.h>

namespace zelto::language {
namespace {

PageScope scope_of(std::wstring_view text) { return page_scope(text, tokenize(text).value().all); }

TEST(PageScope, LetsMostPagesBeFunctions) {
  for (const wchar_t* text :
       {L"", L"var a = 1; function f() {}", L"x = 1", L"a instanceof Function", L"Function.prototype.call.call(f)",
        L"// eval", L"a = 'eval(1)'", L"class A { constructor() {} }", L"o.evaluate()", L"with (a) b = 1",
        L"this.constructor", L"var s = \"a constructor\""}) {
    EXPECT_TRUE(scope_of(text).can_be_function) << korlib::to_utf8(text);
  }
}

TEST(PageScope, KeepsCodeMadeOfTextOutOfFunctions) {
  for (const wchar_t* text : {L"eval('1')",
                              L"(0, eval)('1')",
                              L"this.eval('1')",
                              L"this['eval']('1')",
                              L"var e = eval",
                              L"`eval`",
                              L"new Function('a', 'return a')",
                              L"Function('return 1')",
                              L"var F = Function",
                              L"Function.call",
                              L"Function.prototype.constructor('1')",
                              L"f.constructor('return 1')()",
                              L"f.constructor.call()",
                              L"f['constructor']('return 1')()",
                              L"import('x')",
                              L"new WeakRef(a)",
                              L"new FinalizationRegistry(f)",
                              L"Atomics.wait(a)",
                              L"new SharedArrayBuffer(1)",
                              L"ev\\u0061l('1')"}) {
    EXPECT_FALSE(scope_of(text).can_be_function) << korlib::to_utf8(text);
  }
}

TEST(PageScope, KeepsPagesOutOfFunctionsThatWouldSeeOne) {
  for (const wchar_t* text :
       {L"f.caller", L"f['caller']", L"var undefined", L"var a, NaN, b", L"undefined = 1", L"var $zelto_v",
        L"Object.defineProperty(this, 'a', {})", L"var t = this; Object.getOwnPropertyDescriptor(t, 'a')",
        L"globalThis['__defineGetter__']('a', f)", L"let a; this['e' + 'val']('a')", L"let a; f.constructor"}) {
    EXPECT_FALSE(scope_of(text).can_be_function) << korlib::to_utf8(text);
  }
  for (const wchar_t* text : {L"a === undefined", L"f(a, undefined)", L"[NaN, 1]", L"this.a = 1", L"var t = this",
                              L"Object.defineProperty(o, 'a', {})", L"x.constructor === Array",
                              L"const page = Server.CreateObject('Mirt'); page.AddScript(this)"}) {
    EXPECT_TRUE(scope_of(text).can_be_function) << korlib::to_utf8(text);
  }
}

TEST(PageScope, KnowsWhichPagesMayHideSomething) {
  for (const wchar_t* text :
       {L"Symbol('a')", L"Reflect.ownKeys(a)", L"var O = Object", L"Object['a']", L"this['a']", L"a.constructor",
        L"a.__proto__", L"a['__proto__']", L"a['x' + b]", L"a[b + 'x']", L"f()[a]", L"({})[a]", L"a[`${b}`]",
        L"({ m() { super.a = 1 } })", L"Object.defineProperty(a, 'b', {})", L"Object.getOwnPropertySymbols(a)"}) {
    EXPECT_TRUE(scope_of(text).may_hide) << korlib::to_utf8(text);
  }
  for (const wchar_t* text :
       {L"", L"this.a = 1", L"page.AddScript(this)", L"Object.keys(a)", L"'Symbol of'", L"a[0]", L"a[i]", L"a['x']",
        L"a[i + 1]", L"f(['x' + b])", L"a = ['x' + b, f()]", L"f()['x']", L"a[b[i]]"}) {
    EXPECT_FALSE(scope_of(text).may_hide) << korlib::to_utf8(text);
  }
}

TEST(PageScope, KnowsWhichPagesCannotSeeTheGlobalObject) {
  for (const wchar_t* text :
       {L"", L"var a = 1; function f() {}", L"x = 1", L"let a; class C {}", L"a.thisOne", L"'use strict'; var a",
        L"// this", L"a = 'is this it?'", L"Object.keys(a)", L"page.AddScript(this)", L"row.Script = this; f()",
        L"row.Script = this\nf()", L"function f() { if (a) row.Script = this }"}) {
    EXPECT_TRUE(scope_of(text).may_share_world) << korlib::to_utf8(text);
  }
  for (const wchar_t* text : {L"this.a",
                              L"f(this)",
                              L"function f() { return this }",
                              L"() => this",
                              L"`${this}`",
                              L"globalThis",
                              L"a.globalThis",
                              L"a['globalThis']",
                              L"({ m() { super.x = 1 } })",
                              L"var v = o.valueOf; v()",
                              L"o['valueOf']",
                              L"eval('a')",
                              L"var O = Object",
                              L"f.constructor",
                              L"Symbol('a')",
                              L"a.__proto__",
                              L"a.add(this)",
                              L"a.Add(1, this)",
                              L"a.Add(this.b)",
                              L"a.b.Add(this)",
                              L"f().Add(this)",
                              L"a?.Add(this)",
                              L"new a.Add(this)",
                              L"b = a.Script = this",
                              L"() => a.Script = this",
                              L"a.Script = this.b",
                              L"a.Script = this\n[0]",
                              L"a.Script += this",
                              L"Script = this"}) {
    EXPECT_FALSE(scope_of(text).may_share_world) << korlib::to_utf8(text);
  }
}

TEST(PageScope, FindsWhatMayBeLexicalNames) {
  const auto names = [](std::wstring_view text) {
    std::u16string all;
    for (const std::u16string& name : scope_of(text).lexical_candidates) all += name + u" ";
    return korlib::to_utf8(std::wstring(all.begin(), all.end()));
  };
  EXPECT_EQ("a ", names(L"let a"));
  EXPECT_EQ("a b ", names(L"const a = b; var c"));
  EXPECT_EQ("a b c d ", names(L"let { a, b: [c] } = d")) << "a key and a value are among them";
  EXPECT_EQ("A ", names(L"class A extends B { m() { let inner } }"));
  EXPECT_EQ("a b ", names(L"let a\nlet b\nc"));
  EXPECT_EQ("", names(L"var a; function f() { let b } { let c } for (let d;;) {}"));
}

TEST(PageScope, KnowsStrictPages) {
  EXPECT_TRUE(scope_of(L"'use strict'; a").is_strict);
  EXPECT_TRUE(scope_of(L"\n\"use strict\"\nvar a").is_strict);
  EXPECT_FALSE(scope_of(L"a; 'use strict'").is_strict);
  EXPECT_FALSE(scope_of(L"'use strict' + a").is_strict);
  EXPECT_TRUE(scope_of(L"'use strict' + a").can_be_function);
  EXPECT_FALSE(scope_of(L"'use loose'; 'use strict'").can_be_function) << "which the function's text would not show";
}

}  // namespace
}  // namespace zelto::language
