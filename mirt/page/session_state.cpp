// What the page keeps in the host's Session: bound when Process starts, and given up.
#include "frame/error.h"
#include "page/mirt_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::ISessionObject;
using ZeltoTypeLibrary::IVariantDictionary;

// What the host's Session holds under the name, where that is an object as the controller stores it.
CComPtr<IUnknown> stored_object(ISessionObject* session, const CComBSTR& name) {
  CComVariant value;
  if (!mirt::succeeded_or_forgotten(session->get_Value(name, &value)) || value.vt != VT_UNKNOWN) return nullptr;
  return value.punkVal;
}

}  // namespace

HRESULT Self::On_StartMirtSession(bool& go_on) { return fire(L"On_FirstAccess", true, go_on); }
HRESULT Self::On_EndMirtSession(bool& go_on) { return fire(L"On_LastAccess", true, go_on); }

// Without a Session or a Name the page keeps nothing.
bool Self::has_state() const { return asp_.session && !name_.empty(); }

HRESULT Self::bind_session() {
  if (!has_state()) {
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

// The script, or the host, may have given the state up while the page ran.
HRESULT Self::end_session(bool& go_on) {
  if (!has_state() || stored_object(asp_.session.get(), name_)) return S_OK;
  return On_EndMirtSession(go_on);
}

// Until Process has bound a session there is none to ask, which a script hears in the same words.
CComPtr<IMirtSession> Self::session_state() const {
  return session_ ? session_ : CComPtr<IMirtSession>(&g_oMirtSessionNull);
}

// Never null with success: a session whose dictionary could not be made fails here.
HRESULT Self::get_session_bag(CComPtr<IKorLibDictionary>* bag) {
  RETURN_IF_FAILED(session_state()->get_Bag(bag->put()));
  return *bag ? S_OK : E_FAIL;
}

// The request field that carries the command.
HRESULT Self::command_field(CComBSTR* name) {
  if (!backable_) return session_state()->GetCommandName(name->put());
  *name = command_name_;
  return command_name_.get() && !name->get() ? E_OUTOFMEMORY : S_OK;
}

STDMETHODIMP Self::Abandon() {
  if (!asp_.session) return E_FAIL;
  CComPtr<IVariantDictionary> contents;
  RETURN_IF_FAILED(asp_.session->get_Contents(contents.put()));
  if (!contents) return E_FAIL;
  RETURN_IF_FAILED(contents->Remove(korlib::borrowed(name_.get())));
  return S_OK;
}
