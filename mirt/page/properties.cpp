// The controller's making, and the properties that only hold a value.
#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"
#include "templator/marks.h"
#include "templator/mirted_templator_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;

HRESULT put(CComBSTR& property, BSTR value) {
  CComBSTR copy = page::copy_of(value);
  if (value && !copy) return E_OUTOFMEMORY;
  property = std::move(copy);
  return S_OK;
}

HRESULT get(const CComBSTR& property, BSTR* value) {
  if (!value) return E_POINTER;
  *value = property.copy();
  return property && !*value ? E_OUTOFMEMORY : S_OK;
}

// 1 is not True: only what a script's True arrives as.
HRESULT put(bool& property, VARIANT_BOOL value) {
  property = value == VARIANT_TRUE;
  return S_OK;
}

HRESULT get(bool property, VARIANT_BOOL* value) {
  if (!value) return E_POINTER;
  *value = property ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

}  // namespace

Self::GIMirtImpl()
    : CMirtConcept(this),
      CTemplatorConcept(kMarkTypes<MarkOwner::kPage>.data()),
      fields_(asp_),
      memory_(asp_),
      binding_(handler_, fields_, memory_),
      templates_(*this, [this](bool& is_drawn) { return draw_instead(is_drawn); }),
      texts_(*this),
      messages_(texts_),
      inputs_(handler_, memory_, dictionaries_, texts_),
      draw_events_(owner_, handler_, inputs_, messages_) {}

// Templators that this page has made may live on.
Self::~GIMirtImpl() {
  if (child_link_) *child_link_ = {};
}

HRESULT Self::InContext(IGetContextProperties* context) {
  RETURN_IF_FAILED(asp_.take_from(context));
  CComPtr<IUnknown> output;
  RETURN_IF_FAILED(asp_.response.query(output.put()));
  return CTemplatorConcept::putref_Output(output.get());
}

STDMETHODIMP Self::putref_Output(IUnknown* sink) { return CTemplatorConcept::putref_Output(sink); }

STDMETHODIMP Self::get_Output(IUnknown** sink) {
  if (!sink) return E_POINTER;
  return CTemplatorConcept::get_Output(sink);
}

STDMETHODIMP Self::put_Command(BSTR value) { return put(command_, value); }
STDMETHODIMP Self::get_Command(BSTR* value) { return get(command_, value); }
STDMETHODIMP Self::put_Template(BSTR value) { return put(template_, value); }
STDMETHODIMP Self::get_Template(BSTR* value) { return get(template_, value); }
STDMETHODIMP Self::put_TemplateFolder(BSTR value) { return put(templates_.folder, value); }
STDMETHODIMP Self::get_TemplateFolder(BSTR* value) { return get(templates_.folder, value); }
STDMETHODIMP Self::put_TemplateExt(BSTR value) { return put(templates_.extension, value); }
STDMETHODIMP Self::get_TemplateExt(BSTR* value) { return get(templates_.extension, value); }
STDMETHODIMP Self::put_TemplateCharset(BSTR value) { return put(templates_.charset, value); }
STDMETHODIMP Self::get_TemplateCharset(BSTR* value) { return get(templates_.charset, value); }
STDMETHODIMP Self::put_DefaultTemplate(BSTR value) { return put(templates_.default_template, value); }
STDMETHODIMP Self::get_DefaultTemplate(BSTR* value) { return get(templates_.default_template, value); }
STDMETHODIMP Self::put_TemplatePermissionPath(BSTR value) { return put(templates_.permission_path, value); }
STDMETHODIMP Self::get_TemplatePermissionPath(BSTR* value) { return get(templates_.permission_path, value); }
STDMETHODIMP Self::put_CommandName(BSTR value) { return put(memory_.command_name, value); }
STDMETHODIMP Self::get_CommandName(BSTR* value) { return get(memory_.command_name, value); }
STDMETHODIMP Self::put_Name(BSTR value) { return put(memory_.name, value); }
STDMETHODIMP Self::get_Name(BSTR* value) { return get(memory_.name, value); }

STDMETHODIMP Self::put_Backable(VARIANT_BOOL value) { return put(memory_.backable, value); }
STDMETHODIMP Self::get_Backable(VARIANT_BOOL* value) { return get(memory_.backable, value); }
STDMETHODIMP Self::put_NullIsEmpty(VARIANT_BOOL value) { return put(null_is_empty_, value); }
STDMETHODIMP Self::get_NullIsEmpty(VARIANT_BOOL* value) { return get(null_is_empty_, value); }
STDMETHODIMP Self::put_SubmitDecodeOnPutInto(VARIANT_BOOL value) { return put(binding_.decodes, value); }
STDMETHODIMP Self::get_SubmitDecodeOnPutInto(VARIANT_BOOL* value) { return get(binding_.decodes, value); }
STDMETHODIMP Self::put_CacheTemplate(VARIANT_BOOL value) { return put(templates_.are_cached, value); }
STDMETHODIMP Self::get_CacheTemplate(VARIANT_BOOL* value) { return get(templates_.are_cached, value); }
STDMETHODIMP Self::put_SelfEncode(VARIANT_BOOL value) { return put(self_encode_, value); }
STDMETHODIMP Self::get_SelfEncode(VARIANT_BOOL* value) { return get(self_encode_, value); }
