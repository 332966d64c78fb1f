// The request that a thread is running, as objects created in it see it.
//
// A component that is made while a page runs asks CoGetObjectContext (korlib/activation.h) for the context, and that
// for IGetContextProperties (zelto/context.h), through which it finds Request, Response and the other intrinsic
// objects. The host sets the context around the page:
//
//   {
//     const korlib_host::ContextScope scope(context.get());
//     run_script();
//   }  // what is made from here on is not bound to a request
#pragma once

#include <korlib/ptr.h>

namespace korlib_host {

// Makes `context` what CoGetObjectContext answers on this thread until the scope ends; then the context of the
// enclosing scope holds again, or none. Null hides the enclosing one: CoGetObjectContext answers CONTEXT_E_NOCONTEXT.
//
// The context is counted once for the duration; a component that keeps it, or what it took from it, has counted that
// itself. Scopes end in the reverse order of their beginning, on the thread that began them. Other threads see nothing
// of it, those that the page starts included.
class KORLIB_API ContextScope {
 public:
  // `context` answers to IGetContextProperties, or is null.
  explicit ContextScope(IUnknown* context) noexcept;
  ~ContextScope();
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;

 private:
  CComPtr<IUnknown> context_;
  IUnknown* outer_;  // counted by the scope that it came from
};

}  // namespace korlib_host
