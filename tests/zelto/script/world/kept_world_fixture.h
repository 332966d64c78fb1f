// Pages that come again, each request in a realm of its own.
#pragma once

#include <memory>
#include <string>

#include "language/rewriter.h"
#include "zelto/script/script_fixture.h"

namespace test {

using zelto::language::Program;
using zelto::script::Outcome;
using zelto::script::Realm;
using ProgramPtr = std::shared_ptr<const Program>;

class KeptWorldTest : public ScriptTest {
 protected:
  KeptWorldTest() { realm.reset(); }

  static ProgramPtr page_of(const std::wstring& script, const std::string& url = "/site/page.asp") {
    auto program = std::make_shared<Program>();
    program->url = url;
    zelto::language::set_text(*program, zelto::language::rewrite(script));
    return program;
  }

  // What the page writes, or how it fails.
  std::string ask(const ProgramPtr& program) {
    page->text.clear();
    open(program);
    const Outcome outcome = realm->run(program);
    std::string text = narrow(page->text);
    if (outcome.kind == Outcome::failed) text += " " + said(outcome);
    context = realm->context();
    realm.reset();
    return text;
  }

  void open(const ProgramPtr& program) {
    realm = std::make_unique<Realm>(engine, program);
    realm->set_object(L"Response", page.get());
    realm->set_object(L"o", probe.get());
    realm->set_output(page.get());
  }

  // As an object does that a page calls.
  HRESULT run_within(const ProgramPtr& program) {
    Realm inner(engine, program);
    inner.set_object(L"Response", page.get());
    inner.set_object(L"o", probe.get());
    inner.set_output(page.get());
    return inner.run(program).kind == Outcome::completed ? S_OK : E_FAIL;
  }

  // Asked for again and again, with another page in between, the page answers the same.
  void always(const std::string& expected, const std::wstring& script) {
    const ProgramPtr program = page_of(script);
    const ProgramPtr between = page_of(L"var n = typeof n; other = typeof other; Response.Write(n + other)");
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(expected, ask(program)) << i << ": " << narrow(script);
      EXPECT_EQ("undefinedundefined", ask(between)) << i << ": " << narrow(script);
    }
  }

  // Whether the page runs in the same world again.
  bool is_kept(const std::wstring& script) {
    const ProgramPtr program = page_of(script);
    ask(program);
    ask(program);
    JSContextRef second = context;
    ask(program);
    return context == second;
  }

  JSContextRef context = nullptr;  // of the page that was asked for last
};

}  // namespace test
