// The library of VBScript, called as compiled programs call it.
#pragma once

#include <string>
#include <string_view>

#include "zelto/script/script_fixture.h"

namespace test {

class VbLibraryTest : public ScriptTest {
 protected:
  // What an expression of the library's names gives: "Integer 3", "Null", "Variant() a|b", or "error 13".
  std::string shown(std::wstring_view expression) {
    std::wstring script =
        L"with ($zelto_vb) with (fn) { var result_ = (() => { const show = v => { const kind = typename(v);"
        L" return v === null ? kind : kind.endsWith('()') ? kind + ' ' + join(v, '|') :"
        L" isobject(v) ? kind : kind + ' ' + cstr(v); };"
        L" try { return show((() => ";
    script += expression;
    script += L")()); } catch (e) { caught(e); return 'error ' + get(err, 'number'); } })(); }";
    must_run_as_written(script);
    const CComVariant value = global(L"result_");
    return value.vt == VT_BSTR ? narrow(korlib::view_of(value.bstrVal)) : "no text";
  }

  // Without what is rewritten for pages in JavaScript, as compiled programs run.
  void must_run_as_written(std::wstring_view script) {
    auto program = std::make_shared<zelto::language::Program>();
    program->url = "/site/page.asp";
    program->text = zelto::script::to_utf16(script);
    const zelto::script::Outcome outcome = realm->run(program);
    EXPECT_EQ(zelto::script::Outcome::completed, outcome.kind) << narrow(script) << "\n" << said(outcome);
  }

  struct Case {
    const wchar_t* expression;
    const char* value;
  };
  template <std::size_t count>
  void expect(const Case (&rows)[count]) {
    for (const Case& row : rows) EXPECT_EQ(row.value, shown(row.expression)) << narrow(row.expression);
  }
};

}  // namespace test
