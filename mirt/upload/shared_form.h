// The form of a request, for every controller in it.
//
// A host gives a body away once. The controller that read it shares the form for as long as it lives, and
// one that comes later in the same request, and finds the body spent, takes it from there.
#pragma once

#include <korlib/ptr.h>
#include <zelto/asp.h>

class SharedForm {
 public:
  SharedForm() = default;
  ~SharedForm() { withdraw(); }
  SharedForm(const SharedForm&) = delete;
  SharedForm& operator=(const SharedForm&) = delete;

  // Shares this one in place of the one before; null shares none. Request and form are held meanwhile, so
  // that a later request cannot be taken for this one.
  void share(ZeltoTypeLibrary::IRequest* request, ZeltoTypeLibrary::IRequestDictionary* form);

  // The form shared for the request, null when there is none. Any thread may ask; what it is given
  // belongs to the request's.
  static CComPtr<ZeltoTypeLibrary::IRequestDictionary> find(ZeltoTypeLibrary::IRequest* request);

 private:
  void withdraw();

  CComPtr<IUnknown> request_;  // its identity
  CComPtr<ZeltoTypeLibrary::IRequestDictionary> form_;
  SharedForm* next_ = nullptr;
};
