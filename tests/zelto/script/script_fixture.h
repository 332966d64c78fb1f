// A realm with a Response, two probes and words to say what a script gives.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <korlib/comvariant.h>

#include "script/realm.h"
#include "script/text.h"
#include "zelto/script/probe.h"

namespace test {

class ScriptTest : public ::testing::Test {
 protected:
  ScriptTest() { open_realm(); }

  void open_realm() {
    realm = std::make_unique<zelto::script::Realm>(engine);
    realm->set_object(L"Response", page.get());
    realm->set_object(L"o", probe.get());
    realm->set_object(L"p", other.get());
    realm->set_output(page.get());
  }

  zelto::script::Outcome run(std::wstring_view script) {
    return realm->run(zelto::language::compile(script, "/site/page.asp"));
  }

  // Runs the script, which is to complete.
  void must_run(std::wstring_view script) {
    const zelto::script::Outcome outcome = run(script);
    EXPECT_EQ(zelto::script::Outcome::completed, outcome.kind) << narrow(script) << "\n" << said(outcome);
  }

  // What String(value of the expression) is.
  std::string text(std::wstring_view expression) {
    must_run(L"var result_ = String(" + std::wstring(expression) + L"\n)");
    const CComVariant value = global(L"result_");
    return value.vt == VT_BSTR ? narrow(korlib::view_of(value.bstrVal)) : "no text";
  }

  CComVariant global(const wchar_t* name) {
    CComPtr<IDispatch> object;
    object.attach(realm->global());
    CComBSTR text(name);
    BSTR names = text;
    DISPID id = 0;
    CComVariant result;
    if (FAILED(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_SYSTEM_DEFAULT, &id))) return result;
    DISPPARAMS none{};
    object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr);
    return result;
  }

  static std::string narrow(std::wstring_view text) { return zelto::script::to_utf8(text); }
  static std::string said(const zelto::script::Outcome& outcome) {
    if (!outcome.error) return "no error";
    return narrow(outcome.error->source) + ": " + narrow(outcome.error->message) + " at " + outcome.error->file + ":" +
           std::to_string(outcome.error->line);
  }
  std::string error_of(std::wstring_view script) {
    const zelto::script::Outcome outcome = run(script);
    EXPECT_EQ(zelto::script::Outcome::failed, outcome.kind) << narrow(script);
    return said(outcome);
  }

  zelto::script::Engine engine;
  CComPtr<Page> page = korlib::make<Page>();
  CComPtr<Probe> probe = korlib::make<Probe>();
  CComPtr<Probe> other = korlib::make<Probe>();
  std::unique_ptr<zelto::script::Realm> realm;
};

}  // namespace test
