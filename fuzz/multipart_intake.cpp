// Any bytes as the body of an upload, from the request to the values of the form.
#include <cstdint>
#include <cstdlib>
#include <string>

#include <korlib/adostream.h>
#include <mirt/mirt.h>

#include "frame/globals.h"
#include "support/fake_asp.h"
#include "upload/intake.h"

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

void require(bool claim) {
  if (!claim) std::abort();
}

void read_file(IDispatch* object) {
  CComPtr<IFormFile> file;
  require(SUCCEEDED(object->QueryInterface(korlib::iid_of<IFormFile>, file.put_void())));
  CComBSTR name;
  CComPtr<IDispatch> stream;
  require(SUCCEEDED(file->get_FileName2(name.put())));
  require(SUCCEEDED(file->get_Stream(stream.put())));
}

void read_field(IRequestDictionary& form, const wchar_t* name) {
  const CComBSTR key(name);
  CComVariant field;
  require(SUCCEEDED(form.get_Item(korlib::borrowed(key.get()), &field)));
  if (field.vt != VT_DISPATCH) return;
  CComPtr<IStringList> values;
  int count = 0;
  require(SUCCEEDED(CComPtr<IDispatch>(field.pdispVal).query(values.put())));
  require(SUCCEEDED(values->get_Count(&count)) && count > 0);
  for (LONG i = 1; i <= count; ++i) {
    CComVariant value;
    require(SUCCEEDED(values->get_Item(korlib::long_variant(i), &value)));
    require(value.vt == VT_BSTR || value.vt == VT_DISPATCH);
    if (value.vt == VT_DISPATCH) read_file(value.pdispVal);
  }
  CComVariant all;  // fails where a file is among several
  values->get_Item(korlib::omitted(), &all);
}

}  // namespace

// The first byte chooses the code page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr LONG kCodePages[] = {65001, 932, 1252, 1};
  {
    fake::Asp asp;
    asp.response->code_page = kCodePages[data[0] % std::size(kCodePages)];
    asp.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
    asp.request->body.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
    CComPtr<IRequestDictionary> form;
    const HRESULT hr = read_multipart_form(asp.request.get(), asp.response.get(), &form);
    require(form && (hr == S_OK || hr == E_FAIL));
    for (const wchar_t* name : {L"", L"a", L"b", L"f", L"tags"}) read_field(*form.get(), name);
  }
  require(g_nRefCount == 0);
  return 0;
}
