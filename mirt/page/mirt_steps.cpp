// The controller's steps of a page: what it does before or after each script event.
#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;

}  // namespace

STDMETHODIMP Self::Process() {
  return mirt::guarded([&] {
    if (!takes_notes()) return CMirtConcept::Process();
    const CComPtr<IDispatch> alive(owner_);
    const HRESULT hr = CMirtConcept::Process();
    CComPtr<IKorLibDictionary> bag;
    if (SUCCEEDED(memory_.get_bag_if_bound(&bag)) && bag) note_bag(memory_.name.get(), bag.get());
    return hr;
  });
}

HRESULT Self::On_StartMirtSession(bool& go_on) { return fire(L"On_FirstAccess", true, go_on); }
HRESULT Self::On_EndMirtSession(bool& go_on) { return fire(L"On_LastAccess", true, go_on); }

HRESULT Self::On_StartProcess(bool& go_on) {
  RETURN_IF_FAILED(InitMultipartForm());
  RETURN_IF_FAILED(dictionaries_.make());
  bool is_new = false;
  RETURN_IF_FAILED(memory_.bind(&is_new));
  bool ignored = true;
  if (is_new) RETURN_IF_FAILED(On_StartMirtSession(ignored));
  return CMirtConcept::On_StartProcess(go_on);
}

HRESULT Self::On_EndProcess(bool& go_on) {
  RETURN_IF_FAILED(CMirtConcept::On_EndProcess(go_on));
  dictionaries_.drop();
  return memory_.is_lost() ? On_EndMirtSession(go_on) : S_OK;
}

HRESULT Self::On_StartCommand(bool& go_on) {
  if (command_.empty()) RETURN_IF_FAILED(read_command());
  return CMirtConcept::On_StartCommand(go_on);
}

HRESULT Self::read_command() {
  CComPtr<page::RequestFields::Collection> fields;
  RETURN_IF_FAILED(fields_.get_submitted(&fields));
  CComBSTR field;
  RETURN_IF_FAILED(memory_.get_command_field(&field));
  CComVariant value;
  RETURN_IF_FAILED(fields->get_Item(korlib::borrowed(field.get()), &value));
  RETURN_IF_FAILED(value.change_type(VT_BSTR));
  command_.attach(std::exchange(value.bstrVal, nullptr));
  return S_OK;
}

HRESULT Self::Command(bool& handled) {
  RETURN_IF_FAILED(CMirtConcept::Command(handled));
  if (!handled && command_.empty()) handled = true;
  return S_OK;
}

HRESULT Self::On_EndCommand(bool& go_on) {
  RETURN_IF_FAILED(CMirtConcept::On_EndCommand(go_on));
  return memory_.end_command();
}

HRESULT Self::On_StartDraw(bool& go_on) {
  if (template_.empty()) RETURN_IF_FAILED(put_Template(templates_.default_template));
  return CMirtConcept::On_StartDraw(go_on);
}

HRESULT Self::Draw(bool& handled) {
  // The name is kept on the stack over the recursion below: a page that refuses for ever ends in the host's check of
  // the stack, and does not spin here.
  const CComBSTR event_name = page::join({L"OnDrawTemplate_", template_.view()});
  bool accepted = true;
  RETURN_IF_FAILED(fire(event_name, true, accepted));
  if (!accepted) return Draw(handled);

  bool drawn = false;
  RETURN_IF_FAILED(CMirtConcept::Draw(drawn));
  if (!drawn && !template_.empty()) {
    const CComBSTR name = template_;
    if (!name.get()) return E_OUTOFMEMORY;
    RETURN_IF_FAILED(templates_.draw(name.view()));
  }
  handled = true;
  return S_OK;
}

// A template file cannot be read. The script may name another template instead, and asks for it by returning False.
HRESULT Self::draw_instead(bool& is_drawn) {
  bool is_error = true;
  RETURN_IF_FAILED(fire(L"On_TemplateNotFound", true, is_error));
  is_drawn = !is_error;
  bool handled = false;
  return is_drawn ? Draw(handled) : S_OK;
}
