// The component in a host that exports exactly what the contract lists, and no more.
#include "mirt/hosts/exact_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <mirt/mirt.h>
#include <zelto/asp.h>
#include <zelto/context.h>

#include <cstring>
#include <string>

#include <korlib/activation.h>
#include <korlib/comvariant.h>
#include <korlib/errorinfo.h>

#include "support/still.h"
#include "support/unused_members.h"

namespace test {
namespace {

namespace asp = ZeltoTypeLibrary;

class Server final : public StillDispatch<asp::IServer> {
 public:
  HRESULT HTMLEncode(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT URLEncode(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT MapPath(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT CreateObject(BSTR, IDispatch**) override { return E_NOTIMPL; }
};

class Application final : public StillDispatch<asp::IApplicationObject> {
 public:
  HRESULT get_Value(BSTR, VARIANT*) override { return E_NOTIMPL; }
  HRESULT put_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT putref_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT Lock() override { return E_NOTIMPL; }
  HRESULT UnLock() override { return E_NOTIMPL; }
  HRESULT get_Contents(asp::IVariantDictionary**) override { return E_NOTIMPL; }
};

class Response final : public UnusedResponse<StillDispatch<asp::IResponse>> {
 public:
  HRESULT Write(VARIANT text) override {
    written += korlib::view_of(text.bstrVal);
    return S_OK;
  }
  HRESULT get_CodePage(LONG* page) override {
    *page = code_page;
    return S_OK;
  }

  std::wstring written;
  LONG code_page = 65001;
};

// Those of a multipart post.
class ServerVariables final : public StillDispatch<asp::IRequestDictionary> {
 public:
  HRESULT get_Item(VARIANT key, VARIANT* value) override {
    const bool is_type = korlib::view_of(key.bstrVal) == L"HTTP_CONTENT_TYPE";
    CComVariant(is_type ? L"multipart/form-data; boundary=B" : L"POST").detach_to(value);
    return S_OK;
  }
  HRESULT get__NewEnum(IUnknown**) override { return E_NOTIMPL; }
  HRESULT get_Count(int*) override { return E_NOTIMPL; }
  HRESULT get_Key(VARIANT, VARIANT*) override { return E_NOTIMPL; }
};

class Request final : public StillDispatch<asp::IRequest> {
 public:
  HRESULT get_Item(BSTR, IDispatch**) override { return E_NOTIMPL; }
  HRESULT get_QueryString(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_Form(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_ServerVariables(asp::IRequestDictionary** values) override {
    *values = &variables;
    return S_OK;
  }
  HRESULT get_ClientCertificate(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_Cookies(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_TotalBytes(LONG* bytes) override {
    *bytes = static_cast<LONG>(body.size());
    return S_OK;
  }
  HRESULT BinaryRead(VARIANT*, VARIANT* data) override {
    CComSafeArray array(VT_UI1, static_cast<ULONG>(body.size()));
    std::memcpy(array.data<char>(), body.data(), body.size());
    array.detach_to(data);
    return S_OK;
  }

  ServerVariables variables;
  std::string body;
};

class Context final : public Still<IGetContextProperties> {
 public:
  HRESULT Count(LONG*) override { return E_NOTIMPL; }
  HRESULT GetProperty(BSTR name, VARIANT* value) override {
    const std::wstring_view wanted = korlib::view_of(name);
    IDispatch* object = nullptr;
    if (wanted == L"Server") object = &server;
    if (wanted == L"Application") object = &application;
    if (wanted == L"Request") object = &request;
    if (wanted == L"Response") object = &response;
    if (!object) return E_INVALIDARG;
    CComVariant(object).detach_to(value);
    return S_OK;
  }
  HRESULT EnumNames(IUnknown**) override { return E_NOTIMPL; }

  Server server;
  Application application;
  Request request;
  Response response;
};

class ExactHost : public testing::Test {
 protected:
  void SetUp() override {
    module_ = dlopen(MIRT_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(module_) << dlerror();
    attached_ = symbol<int(void*, unsigned int, void*)>("DllMain")(module_, 1, nullptr);
  }
  void TearDown() override {
    object_context = nullptr;
    if (!module_) return;
    EXPECT_EQ(0, *symbol<long>("g_nRefCount"));
    symbol<int(void*, unsigned int, void*)>("DllMain")(module_, 0, nullptr);
    dlclose(module_);
  }

  template <class Symbol>
  Symbol* symbol(const char* name) const {
    return reinterpret_cast<Symbol*>(dlsym(module_, name));
  }
  template <class Interface>
  CComPtr<Interface> create(const wchar_t* name) const {
    void* slot = const_cast<wchar_t*>(name);
    EXPECT_EQ(S_OK,
              symbol<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject")(CLSID_NULL, IID_IClassFactory, &slot));
    CComPtr<IClassFactory> factory;
    factory.attach(static_cast<IClassFactory*>(slot));
    CComPtr<Interface> object;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, korlib::iid_of<Interface>, object.put_void()));
    return object;
  }

  // The field "a" of a post of that text in the request's code page: its text, or the code of Process.
  std::wstring uploaded(const std::string& text) {
    context_.request.body = "--B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n" + text + "\r\n--B--\r\n";
    object_context = &context_;
    const CComPtr<IMirt> page = create<IMirt>(L"Mirt");
    const HRESULT hr = page->Process();
    if (FAILED(hr)) return L"<" + std::to_wstring(static_cast<unsigned>(hr)) + L">";
    CComPtr<IDispatch> form;
    EXPECT_EQ(S_OK, page->get_Request(form.put()));
    CComPtr<asp::IRequestDictionary> fields;
    EXPECT_EQ(S_OK, form.query(fields.put()));
    const CComVariant name(L"a");
    CComVariant list;
    EXPECT_EQ(S_OK, fields->get_Item(name, &list));
    const CComQIPtr<asp::IStringList> values(list.pdispVal);
    CComVariant value;
    EXPECT_EQ(S_OK, values->get_Item(korlib::omitted(), &value));
    return std::wstring(korlib::view_of(value.bstrVal));
  }

  void* module_ = nullptr;
  int attached_ = -1;
  Context context_;
};

// It was refused: "undefined symbol: SafeArrayGetVartype".
TEST_F(ExactHost, LoadsTheModuleWithoutTypeLibraries) {
  EXPECT_EQ(0, attached_);
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "LoadTypeLib")) << "the host exports more than it says";
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "codepage_utf32"));
  const CComPtr<IUtility> utility = create<IUtility>(L"Utility");
  const CComBSTR spaced(L" x ");
  CComBSTR trimmed;
  EXPECT_EQ(S_OK, utility->Trim(spaced, trimmed.put()));
  EXPECT_EQ(L"x", std::wstring(trimmed.view()));
}

TEST_F(ExactHost, SearchesArrays) {
  const CComPtr<IUtility> utility = create<IUtility>(L"Utility");
  CComSafeArray array(VT_VARIANT, 2);
  CComVariant(L"a").detach_to(&array.data<VARIANT>()[0]);
  CComVariant(LONG{7}).detach_to(&array.data<VARIANT>()[1]);
  SAFEARRAY* const held = array.get();
  CComVariant list;
  array.detach_to(&list);
  CComVariant wanted(L"7");
  VARIANT_BOOL found = VARIANT_FALSE;
  EXPECT_EQ(S_OK, utility->FindString(&list, &wanted, &found));
  EXPECT_EQ(VARIANT_TRUE, found);
  EXPECT_EQ(0u, held->cLocks);
}

TEST_F(ExactHost, DrawsTemplates) {
  object_context = &context_;
  const CComPtr<IMirt> page = create<IMirt>(L"Mirt");
  const CComBSTR text(L"a(#?#)b");
  EXPECT_EQ(S_OK, page->ProcessTemplate(text));
  EXPECT_EQ(L"acb", context_.response.written);
  const CComPtr<ITextTemplator> templator = create<ITextTemplator>(L"TextTemplator");
  const CComBSTR plain(L"x(# no #)y");
  EXPECT_EQ(S_OK, templator->ProcessTemplate(plain));
  CComBSTR drawn;
  EXPECT_EQ(S_OK, templator->Flush(drawn.put()));
  EXPECT_EQ(L"xy", std::wstring(drawn.view()));
}

// It does not give error objects out, so the places in templates are left away, and the words stay.
TEST_F(ExactHost, LearnsTheWordsOfAFailingMark) {
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "GetErrorInfo"));
  const auto take = reinterpret_cast<decltype(GetErrorInfo)*>(runtime_function("GetErrorInfo"));
  object_context = &context_;
  const CComPtr<IMirt> page = create<IMirt>(L"Mirt");
  const CComBSTR text(L"a(#%Nobody#)b");
  EXPECT_EQ(E_FAIL, page->ProcessTemplate(text));
  CComPtr<IErrorInfo> error;
  ASSERT_EQ(S_OK, take(0, error.put()));
  CComBSTR words;
  EXPECT_EQ(S_OK, error->GetDescription(words.put()));
  EXPECT_EQ(L"Event 'OnDraw_Nobody' not found.", std::wstring(words.view()));
  CComBSTR places;
  EXPECT_EQ(S_OK, error->GetHelpFile(places.put()));
  EXPECT_EQ(nullptr, places.get());
}

// U+00E9 is C3 A9 in UTF-8. A host that converts no other code page has ASCII in all of them.
TEST_F(ExactHost, ReadsUploadsInUtf8) {
  EXPECT_EQ(L"caf\u00E9", uploaded("caf\xC3\xA9"));
  context_.response.code_page = 1252;
  EXPECT_EQ(L"cafe", uploaded("cafe"));
  EXPECT_EQ(L"<" + std::to_wstring(static_cast<unsigned>(E_FAIL)) + L">", uploaded("caf\xE9"));
}

}  // namespace
}  // namespace test
