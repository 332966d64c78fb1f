#include <korlib_host/typelib.h>

#include <atomic>

namespace {
std::atomic<korlib_host::TypeLibraryProvider> current_provider{nullptr};
}  // namespace

namespace korlib_host {
void set_type_library_provider(TypeLibraryProvider provider) noexcept { current_provider.store(provider); }
}  // namespace korlib_host

HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library) {
  if (!library) return E_POINTER;
  *library = nullptr;
  if (!path) return E_INVALIDARG;
  const korlib_host::TypeLibraryProvider provider = current_provider.load();
  return provider ? provider(path, library) : TYPE_E_CANTLOADLIBRARY;
}
