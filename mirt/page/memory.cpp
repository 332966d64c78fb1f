#include "page/memory.h"

#include <utility>

#include <korlib/comvariant.h>

#include "frame/error.h"

namespace page {
namespace {

using ZeltoTypeLibrary::ISessionObject;
using ZeltoTypeLibrary::IVariantDictionary;

// What the Session holds under the name, if it is a VT_UNKNOWN, as bind() stores it.
CComPtr<IUnknown> stored_object(ISessionObject* session, const CComBSTR& name) {
  CComVariant value;
  if (!mirt::succeeded_or_forgotten(session->get_Value(name, &value)) || value.vt != VT_UNKNOWN) return nullptr;
  return value.punkVal;
}

}  // namespace

bool Memory::should_have_state() const { return asp_.session && !name.empty(); }

HRESULT Memory::bind(bool* is_new) {
  *is_new = false;
  if (!should_have_state()) {
    state_ = &g_oMirtSessionNull;
    return S_OK;
  }
  CComPtr<IMirtSession> state;
  if (const CComPtr<IUnknown> stored = stored_object(asp_.session.get(), name)) {
    // The private interface is asked for by name, which the slot holds on entry: null means it.
    RETURN_IF_FAILED(stored->QueryInterface(IID_NULL, state.put_void()));
    state_ = std::move(state);
    return S_OK;
  }
  state.attach(new CMirtSession);
  state_ = state;
  *is_new = true;
  const CComVariant value(static_cast<IUnknown*>(state.get()));
  return asp_.session->putref_Value(name, value);
}

bool Memory::is_lost() const { return should_have_state() && !stored_object(asp_.session.get(), name); }

HRESULT Memory::abandon() {
  if (!asp_.session) return E_FAIL;
  CComPtr<IVariantDictionary> contents;
  RETURN_IF_FAILED(asp_.session->get_Contents(contents.put()));
  if (!contents) return E_FAIL;
  RETURN_IF_FAILED(contents->Remove(korlib::borrowed(name.get())));
  return S_OK;
}

CComPtr<IMirtSession> Memory::state() const { return state_ ? state_ : CComPtr<IMirtSession>(&g_oMirtSessionNull); }

HRESULT Memory::get_bag(CComPtr<IKorLibDictionary>* bag) const {
  RETURN_IF_FAILED(state()->get_Bag(bag->put()));
  return *bag ? S_OK : E_FAIL;
}

HRESULT Memory::get_bag_if_bound(CComPtr<IKorLibDictionary>* bag) const {
  const CComPtr<IMirtSession> held = state();
  return held == CComPtr<IMirtSession>(&g_oMirtSessionNull) ? S_OK : held->get_Bag(bag->put());
}

HRESULT Memory::get_command_field(CComBSTR* field) const {
  if (!backable) return state()->GetCommandName(field->put());
  *field = command_name;
  return command_name.get() && !field->get() ? E_OUTOFMEMORY : S_OK;
}

HRESULT Memory::end_command() { return backable ? S_OK : state()->IncrementCommand(); }

}  // namespace page
