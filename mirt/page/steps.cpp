// The controller's steps of a page: what it does before or after each script event.
#include <korlib/activation.h>
#include <korlib/comvariant.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::ISessionObject;

HRESULT new_dictionary(IKorLibDictionary** dictionary) {
  return CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                          korlib::iid_of<IKorLibDictionary>, reinterpret_cast<void**>(dictionary));
}

// What the host's Session holds under the name, where that is an object as the controller stores it.
CComPtr<IUnknown> stored_object(ISessionObject* session, const CComBSTR& name) {
  CComVariant value;
  if (FAILED(session->get_Value(name, &value)) || value.vt != VT_UNKNOWN) return nullptr;
  return value.punkVal;
}

}  // namespace

STDMETHODIMP Self::Process() try { return CMirtConcept::Process(); } catch (...) {
  return mirt::hresult_from_exception();
}

HRESULT Self::On_StartMirtSession(bool& go_on) { return fire(L"On_FirstAccess", true, go_on); }
HRESULT Self::On_EndMirtSession(bool& go_on) { return fire(L"On_LastAccess", true, go_on); }

HRESULT Self::On_StartProcess(bool& go_on) {
  RETURN_IF_FAILED(InitMultipartForm());
  RETURN_IF_FAILED(make_dictionaries());
  RETURN_IF_FAILED(bind_session());
  return CMirtConcept::On_StartProcess(go_on);
}

HRESULT Self::make_dictionaries() {
  CComPtr<IKorLibDictionary> view;
  CComPtr<IKorLibDictionary> include;
  RETURN_IF_FAILED(new_dictionary(view.put()));
  RETURN_IF_FAILED(new_dictionary(include.put()));
  view_ = std::move(view);
  include_ = std::move(include);
  return S_OK;
}

HRESULT Self::bind_session() {
  if (!asp_.session || name_.empty()) {
    session_ = &g_oMirtSessionNull;
    return S_OK;
  }
  const CComPtr<IUnknown> stored = stored_object(asp_.session.get(), name_);
  if (!stored) return start_session();
  // The private interface is asked for by name, which the slot holds on entry: null means it.
  CComPtr<IMirtSession> session;
  RETURN_IF_FAILED(stored->QueryInterface(IID_NULL, session.put_void()));
  session_ = std::move(session);
  return S_OK;
}

HRESULT Self::start_session() {
  CComPtr<IMirtSession> session;
  session.attach(new CMirtSession);
  session_ = session;
  const CComVariant value(static_cast<IUnknown*>(session.get()));
  RETURN_IF_FAILED(asp_.session->putref_Value(name_, value));
  bool ignored = true;
  return On_StartMirtSession(ignored);
}

HRESULT Self::On_EndProcess(bool& go_on) {
  RETURN_IF_FAILED(CMirtConcept::On_EndProcess(go_on));
  view_.reset();
  include_.reset();
  if (!asp_.session || name_.empty() || stored_object(asp_.session.get(), name_)) return S_OK;
  return On_EndMirtSession(go_on);
}

HRESULT Self::On_StartCommand(bool& go_on) {
  if (command_.empty()) RETURN_IF_FAILED(read_command());
  return CMirtConcept::On_StartCommand(go_on);
}

HRESULT Self::read_command() {
  CComPtr<IDispatch> request;
  RETURN_IF_FAILED(get_Request(request.put()));
  CComPtr<IRequestDictionary> fields;
  RETURN_IF_FAILED(request.query(fields.put()));
  CComBSTR field;
  RETURN_IF_FAILED(command_field(&field));
  CComVariant value;
  RETURN_IF_FAILED(fields->get_Item(korlib::borrowed(field.get()), &value));
  RETURN_IF_FAILED(value.change_type(VT_BSTR));
  command_ = page::copy_of(value.bstrVal);
  return S_OK;
}

HRESULT Self::Command(bool& handled) {
  RETURN_IF_FAILED(CMirtConcept::Command(handled));
  if (!handled && command_.empty()) handled = true;
  return S_OK;
}

HRESULT Self::On_EndCommand(bool& go_on) {
  RETURN_IF_FAILED(CMirtConcept::On_EndCommand(go_on));
  if (backable_) return S_OK;
  const CComPtr<IMirtSession> session = session_;
  return session ? session->IncrementCommand() : E_FAIL;
}

HRESULT Self::On_StartDraw(bool& go_on) {
  if (template_.empty()) template_ = default_template_;
  return CMirtConcept::On_StartDraw(go_on);
}

HRESULT Self::Draw(bool& handled) {
  // The name outlives the recursion below on purpose: each round takes stack, so that a page which
  // refuses for ever comes to an end in the host's stack check instead of spinning here.
  const CComBSTR event_name = page::join({L"OnDrawTemplate_", template_.view()});
  bool accepted = true;
  RETURN_IF_FAILED(fire(event_name, true, accepted));
  if (!accepted) return Draw(handled);

  bool drawn = false;
  RETURN_IF_FAILED(CMirtConcept::Draw(drawn));
  if (!drawn && !template_.empty()) {
    const CComBSTR name = template_;
    RETURN_IF_FAILED(draw_file(name));
  }
  handled = true;
  return S_OK;
}
