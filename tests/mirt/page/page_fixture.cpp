#include "mirt/page/page_fixture.h"

namespace test {

CComPtr<IDispatch> PageTest::new_page() {
  const korlib_host::ContextScope scope(asp_.context.get());
  return module_.create(L"Mirt");
}

CComPtr<FakeScript> PageTest::hold_page_that_leaves(CComPtr<IDispatch>& held) {
  held = new_page();
  CComPtr<FakeScript> own = FakeScript::make();
  own->value(L"v", CComVariant(L"v"));
  own->function(L"leave", [&held](const Arguments&) {
    held.reset();
    return CComVariant();
  });
  call(held.get(), L"AddScript", own);
  return own;
}

IDispatch* PageTest::page() {
  if (!page_) {
    page_ = new_page();
    EXPECT_EQ(S_OK, call(page_.get(), L"AddScript", script_).hr);
  }
  return page_.get();
}

void PageTest::process() {
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
}

std::wstring PageTest::drawn_by(const wchar_t* member, const std::wstring& argument) {
  asp_.response->writes.clear();
  const Answer answer = call(page(), member, argument);
  return FAILED(answer.hr) ? text_of(answer) + output() : output();
}

std::wstring PageTest::draw(const std::wstring& text) { return drawn_by(L"ProcessTemplate", text); }

std::wstring PageTest::draw_file(const std::wstring& name) { return drawn_by(L"DrawTemplate", name); }

void PageTest::in_process(const std::function<void()>& body) {
  script_->function(L"On_EndDraw", [&](const Arguments&) {
    body();
    return CComVariant();
  });
  process();
  script_->remove(L"On_EndDraw");
}

std::wstring PageTest::draw_in_process(const std::wstring& text) {
  std::wstring drawn;
  in_process([&] { drawn = draw(text); });
  return drawn;
}

std::wstring PageTest::file(const std::string& name, const std::string& bytes) {
  folder_.write(name, bytes);
  return folder_.wide(name);
}

void PageTest::use_folder() {
  put(page(), L"TemplateFolder", folder_.wide());
  put(page(), L"TemplateExt", L".html");
}

void PageTest::TearDown() {
  script_->forget_calls();  // their arguments hold the page
  page_.reset();
  script_.reset();
  asp_ = fake::Asp();
  EXPECT_EQ(0, FakeScript::alive()) << "a script is still held";
  ModuleTest::TearDown();
}

}  // namespace test
