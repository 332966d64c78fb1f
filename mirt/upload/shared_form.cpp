#include "upload/shared_form.h"

#include <mutex>
#include <utility>

namespace {

// All that are shared, one linked to the next. Neither needs to be built or destroyed, so that objects
// which outlive the module's static ones find them.
constinit std::mutex list_lock;
constinit SharedForm* first = nullptr;

CComPtr<IUnknown> identity_of(ZeltoTypeLibrary::IRequest* request) {
  CComPtr<IUnknown> identity;
  request->QueryInterface(IID_IUnknown, identity.put_void());
  return identity;
}

}  // namespace

void SharedForm::share(ZeltoTypeLibrary::IRequest* request, ZeltoTypeLibrary::IRequestDictionary* form) {
  withdraw();
  form_ = form;
  if (!form_) return;
  request_ = identity_of(request);
  const std::lock_guard guard(list_lock);
  next_ = std::exchange(first, this);
}

void SharedForm::withdraw() {
  if (!form_) return;  // as for most: their request is not an upload
  const std::lock_guard guard(list_lock);
  for (SharedForm** at = &first; *at; at = &(*at)->next_) {
    if (*at != this) continue;
    *at = next_;
    return;
  }
}

CComPtr<ZeltoTypeLibrary::IRequestDictionary> SharedForm::find(ZeltoTypeLibrary::IRequest* request) {
  const CComPtr<IUnknown> identity = identity_of(request);
  const std::lock_guard guard(list_lock);
  for (const SharedForm* at = first; at; at = at->next_) {
    if (at->request_ == identity) return at->form_;
  }
  return nullptr;
}
