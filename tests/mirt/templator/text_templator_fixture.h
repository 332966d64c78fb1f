// "Mirt.TextTemplator" with a script of the test's.
#pragma once

#include "support/fake.h"
#include "support/module.h"

namespace test {

class TextTemplator : public ModuleTest {
 protected:
  void SetUp() override { templator_ = module_.create(L"TextTemplator"); }
  void TearDown() override {
    script_->forget_calls();
    templator_.reset();
    script_.reset();
    EXPECT_EQ(0, FakeScript::alive()) << "a script is still held";
    ModuleTest::TearDown();
  }

  void add(const CComPtr<FakeScript>& script) { EXPECT_EQ(S_OK, putref(templator_.get(), L"Script", script).hr); }
  Answer process(const wchar_t* text) { return call(templator_.get(), L"ProcessTemplate", text); }
  std::wstring flush() { return text_of(call(templator_.get(), L"Flush")); }
  // What a template draws with the fixture's script, or the code of its failure.
  std::wstring draw(const wchar_t* text) {
    if (!has_script_) add(script_);
    has_script_ = true;
    const std::size_t before = flush().size();
    const Answer answer = process(text);
    return FAILED(answer.hr) ? text_of(answer) : flush().substr(before);
  }

  CComPtr<IDispatch> templator_;
  CComPtr<FakeScript> script_ = FakeScript::make();
  bool has_script_ = false;
};

}  // namespace test
