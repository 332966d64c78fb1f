#include "intrinsics/application_object.h"

namespace zelto {

std::span<const korlib::Member> ApplicationObject::members() {
  using A = ApplicationObject;
  static constexpr korlib::Member table[] = {
      property<&A::get_Value, &A::put_Value, &A::putref_Value>(L"Value").is_default(),
      property<&A::get_Contents>(L"Contents"),
      method<&A::Lock>(L"Lock"),
      method<&A::UnLock>(L"UnLock"),
  };
  return table;
}

HRESULT ApplicationObject::Lock() {
  return guarded(kClassName, [&] { return store_->lock(); });
}

HRESULT ApplicationObject::UnLock() {
  return guarded(kClassName, [&] {
    store_->unlock();
    return S_OK;
  });
}

}  // namespace zelto
