#include "intrinsics/application_object.h"

#include "intrinsics/contents_object.h"
#include "intrinsics/guard.h"

namespace zelto {

namespace {
constexpr std::wstring_view kSource = L"Application";
}

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

HRESULT ApplicationObject::get_Value(BSTR name, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&] { return hold_->get(korlib::view_of(name), value); });
}

HRESULT ApplicationObject::put_Value(BSTR name, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant plain;
    RETURN_IF_FAILED(plain_value(value, plain));
    return hold_->put(korlib::view_of(name), plain);
  });
}

HRESULT ApplicationObject::putref_Value(BSTR name, VARIANT value) {
  return guarded(kSource, [&] { return hold_->put(korlib::view_of(name), value); });
}

HRESULT ApplicationObject::Lock() {
  return guarded(kSource, [&] { return hold_->lock(); });
}

HRESULT ApplicationObject::UnLock() {
  return guarded(kSource, [&] {
    hold_->unlock();
    return S_OK;
  });
}

HRESULT ApplicationObject::get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) {
  if (!contents) return E_POINTER;
  *contents = nullptr;
  return guarded(kSource, [&] {
    *contents = korlib::make<ContentsObject>(hold_).detach();
    return S_OK;
  });
}

}  // namespace zelto
