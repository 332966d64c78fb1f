// The objects that a page makes for its script.
#include <korlib/activation.h>
#include <korlib/dbcommand.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "templator/mirted_templator_class.h"

namespace {

using Self = GIMirtImpl<IMirt>;

}  // namespace

STDMETHODIMP Self::NewADOCommand(VARIANT* connection, BSTR text, LONG type, IDispatch** command) {
  if (!command) return E_POINTER;
  *command = nullptr;
  if (!connection) return E_POINTER;
  CComPtr<IKorDBCommand> made;
  RETURN_IF_FAILED(CoCreateInstance(CLSID_KorDBCommand, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                    korlib::iid_of<IKorDBCommand>, made.put_void()));
  RETURN_IF_FAILED(made->put_ActiveConnection(*connection));
  RETURN_IF_FAILED(made->put_CommandType(type));
  RETURN_IF_FAILED(made->put_CommandText(text));
  return made.query(command);
}

// The child keeps the view and the bag as they are now. A page without a session state has no bag, which
// is no failure until a mark asks for it.
STDMETHODIMP Self::NewTemplator(BSTR prefix, IMirtedTemplator** templator) try {
  if (!templator) return E_POINTER;
  *templator = nullptr;
  CComPtr<IMirtedTemplator> made;
  RETURN_IF_FAILED(g_oCF_MirtedTemplator.CreateInstance(nullptr, korlib::iid_of<IMirtedTemplator>, made.put_void()));
  CComPtr<IKorLibDictionary> bag;
  RETURN_IF_FAILED(memory_.get_bag_if_bound(&bag));
  if (!child_link_) child_link_ = std::make_shared<MainLink>(MainLink{this, &self_encode_});
  RETURN_IF_FAILED(
      static_cast<CMirtedTemplator*>(made.get())->bind(prefix, child_link_, dictionaries_.view.get(), bag.get()));
  *templator = made.detach();
  return S_OK;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::NewMail(BSTR, LONG, IDispatch** mail) {
  if (mail) *mail = nullptr;
  return E_NOTIMPL;
}
