// The request that a thread is running, as objects created in it see it.
#pragma once

#include <korlib/ptr.h>

namespace korlib_host {

// Makes `context` what CoGetObjectContext answers on this thread until the scope ends; then the context
// of the enclosing scope holds again, or none. The context is counted once for the duration. A scope
// ends on the thread that began it.
class KORLIB_API ContextScope {
 public:
  explicit ContextScope(IUnknown* context) noexcept;
  ~ContextScope();
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;

 private:
  CComPtr<IUnknown> context_;
  IUnknown* outer_;
};

}  // namespace korlib_host
