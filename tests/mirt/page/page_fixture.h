// A page controller bound to a request that a test made, called as a script calls it.
#pragma once

#include <filesystem>
#include <string>

#include <korlib_host/context.h>
#include <mirt/mirt.h>

#include "support/fake.h"
#include "support/fake_asp.h"
#include "support/late_bound.h"
#include "support/module.h"
#include "support/temporary_folder.h"

namespace test {

class PageTest : public ModuleTest {
 protected:
  // A new controller bound to `asp_`.
  CComPtr<IDispatch> new_page();
  // Makes the page that `held` alone holds, with a script of its own: its function "leave" lets go of that, its
  // variable v is "v". The script outlives the page: forget its calls when the page has gone.
  CComPtr<FakeScript> hold_page_that_leaves(CComPtr<IDispatch>& held);
  // The fixture's controller with its script, made on first use, so that a test can prepare `asp_`.
  IDispatch* page();
  FakeScript& script() { return *script_; }
  // Keeps the page's state in the session under "p".
  void with_name() { put(page(), L"Name", L"p"); }
  // Runs Process; expects success.
  void process();

  // Everything written so far.
  std::wstring output() const { return asp_.response->text(); }
  // What a template text draws: the code and text of a failure, then what was written.
  std::wstring draw(const std::wstring& text);
  // The same of a template file.
  std::wstring draw_file(const std::wstring& name);
  // The same as draw() while Process runs.
  std::wstring draw_in_process(const std::wstring& text);
  // Runs `body` while Process runs.
  void in_process(const std::function<void()>& body);

  // A file below the test's own folder; its path.
  std::wstring file(const std::string& name, const std::string& bytes);
  // Makes that folder the page's template folder, with the extension ".html".
  void use_folder();
  std::filesystem::path folder() const { return folder_.path(); }

  void TearDown() override;

  fake::Asp asp_;
  CComPtr<FakeScript> script_ = FakeScript::make();

 private:
  std::wstring drawn_by(const wchar_t* member, const std::wstring& argument);

  TemporaryFolder folder_;
  CComPtr<IDispatch> page_;
};

}  // namespace test
