// The request context of the calling thread.
#include <korlib_host/context.h>

#include <korlib/activation.h>

namespace {
thread_local IUnknown* current_context = nullptr;  // counted by the scope that set it
}  // namespace

namespace korlib_host {

ContextScope::ContextScope(IUnknown* context) noexcept : context_(context), outer_(current_context) {
  current_context = context;
}

ContextScope::~ContextScope() { current_context = outer_; }

}  // namespace korlib_host

HRESULT CoGetObjectContext(REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  return current_context ? current_context->QueryInterface(riid, ppv) : CONTEXT_E_NOCONTEXT;
}
