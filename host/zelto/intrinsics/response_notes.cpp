// What the component tells the request's Response for the author of a page, where the site shows its errors.
#include <korlib_host/errors.h>

#include "intrinsics/response_object.h"

namespace zelto {
namespace {

constexpr std::wstring_view kSource = L"Response";

}  // namespace

HRESULT ResponseObject::QueryInterface(REFIID riid, void** ppv) {
  if (riid == korlib::iid_of<ITemplateNotes> && !page_->host->takes_notes()) {
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  return DispatchObject::QueryInterface(riid, ppv);
}

HRESULT ResponseObject::NoteTemplate(BSTR file, BSTR charset) try {
  page_->host->note_template(korlib::view_of(file), korlib::view_of(charset));
  return S_OK;
} catch (...) {
  return korlib::hresult_from_exception(kSource);
}

HRESULT ResponseObject::NoteSlip(TemplateSlip slip, BSTR name, BSTR place, IUnknown* values) try {
  page_->host->note_slip(slip, korlib::view_of(name), korlib::view_of(place), values);
  return S_OK;
} catch (...) {
  return korlib::hresult_from_exception(kSource);
}

HRESULT ResponseObject::NoteArguments(BSTR member, ULONG takes, ULONG given) try {
  page_->host->note_arguments(korlib::view_of(member), takes, given);
  return S_OK;
} catch (...) {
  return korlib::hresult_from_exception(kSource);
}

HRESULT ResponseObject::NoteBag(BSTR page, IUnknown* bag) try {
  page_->host->note_bag(korlib::view_of(page), bag);
  return S_OK;
} catch (...) {
  return korlib::hresult_from_exception(kSource);
}

}  // namespace zelto
