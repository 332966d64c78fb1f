// A host of a hundred lines: loads the component, and has it draw a page for a script that is written in C++.
//
//   build/release/bin/example_host build/release/bin/libmirt.so
//
// It links the component runtime (libkorlib.so), whose functions libmirt.so finds in this process. A host with a
// runtime of its own exports the same functions; docs/host.md says which, and what a host owes besides. What a
// request's objects would answer stands in empty_objects.h.
#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <korlib_host/context.h>
#include <korlib_host/dispatch_object.h>
#include <korlib_host/modules.h>
#include <korlib_host/unicode.h>
#include <mirt/mirt.h>

#include <iostream>
#include <span>
#include <string_view>

#include "context.h"

namespace {

using korlib::DispatchObject;
using korlib::Member;

// Where the page is written. Only Write matters to this host.
class Response final : public example::ResponseOfText<Response> {
 public:
  static std::span<const Member> members() {
    static constexpr Member table[] = {method<&Response::Write>(L"Write")};
    return table;
  }
  HRESULT Write(VARIANT text) override {
    if (text.vt == VT_BSTR) std::cout << korlib::to_utf8(korlib::view_of(text.bstrVal));
    return S_OK;
  }
};

// The page's functions and variables, as a script engine has them: members that are found by name.
class Script final : public DispatchObject<Script, IDispatch> {
 public:
  static std::span<const Member> members() {
    static constexpr Member table[] = {
        method<&Script::draw_rows>(L"OnDraw_Rows"),
        property<&Script::get_title>(L"title"),
        property<&Script::get_number>(L"number"),
    };
    return table;
  }
  HRESULT get_title(BSTR* title) {
    *title = SysAllocString(L"Three & more");
    return *title ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT get_number(LONG* number) {
    *number = number_;
    return S_OK;
  }
  // Called with the page, and an array of the mark's parameters: the text of a row.
  HRESULT draw_rows(IDispatch* page, VARIANT texts) {
    const CComQIPtr<IMirt> controller(page);
    if (!controller || texts.vt != (VT_ARRAY | VT_VARIANT)) return E_INVALIDARG;
    CComVariant text;
    LONG first = 0;
    RETURN_IF_FAILED(SafeArrayGetElement(texts.parray, &first, &text));
    for (number_ = 1; number_ <= 3; ++number_) RETURN_IF_FAILED(controller->ProcessTemplate(text.bstrVal));
    return S_OK;
  }

 private:
  LONG number_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: example_host PATH/libmirt.so\n";
    return 2;
  }
  const auto context = korlib::make<example::Context>(korlib::make<Response>().get());
  const korlib_host::ContextScope request(context.get());  // the component binds itself to it when it is made

  CComPtr<IClassFactory> factory;
  CComPtr<IMirt> page;
  HRESULT hr = korlib_host::get_class_object_by_name(argv[1], L"Mirt", IID_IClassFactory, factory.put_void());
  if (SUCCEEDED(hr)) hr = factory->CreateInstance(nullptr, korlib::iid_of<IMirt>, page.put_void());
  if (SUCCEEDED(hr)) hr = page->AddScript(korlib::make<Script>().get());
  if (SUCCEEDED(hr)) hr = page->put_SelfEncode(VARIANT_TRUE);  // the Server here encodes nothing
  if (SUCCEEDED(hr))
    hr = page->ProcessTemplate(
        CComBSTR(std::wstring_view(L"<h1>(#;title#)</h1>\n(#%Rows|<p>(#;number#)</p>\n#)")).get());
  if (FAILED(hr)) std::cerr << "failed with " << std::hex << static_cast<unsigned>(hr) << '\n';
  return FAILED(hr) ? 1 : 0;
}
