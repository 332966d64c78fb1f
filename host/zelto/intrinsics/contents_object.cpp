#include "intrinsics/contents_object.h"

namespace zelto {

HRESULT plain_value(const VARIANT& value, CComVariant& plain) {
  RETURN_IF_FAILED(VariantCopyInd(plain.put(), &value));
  if (plain.vt != VT_DISPATCH || !plain.pdispVal) return S_OK;
  DISPPARAMS none{};
  CComVariant read;
  RETURN_IF_FAILED(plain.pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT,
                                          DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, &read, nullptr, nullptr));
  plain = std::move(read);
  return S_OK;
}

std::span<const korlib::Member> ContentsObject::members() {
  using C = ContentsObject;
  static constexpr korlib::Member table[] = {
      property<&C::get_Item, &C::put_Item, &C::putref_Item>(L"Item").is_default(),
      property<&C::get_Key>(L"Key"),
      property<&C::get_Count>(L"Count"),
      method<&C::Remove>(L"Remove"),
      method<&C::RemoveAll>(L"RemoveAll"),
      new_enum<&C::get__NewEnum>(),
  };
  return table;
}

template <class Body>
HRESULT ContentsObject::with_name(const VARIANT& index, Body body) {
  return guarded(kSource, [&]() -> HRESULT {
    Names all;
    RETURN_IF_FAILED(names(all));
    VariantKey key;
    RETURN_IF_FAILED(read_key(index, all.size(), key));
    return body(key.place ? all[*key.place] : key.name);
  });
}

HRESULT ContentsObject::get_Item(VARIANT index, VARIANT* value) {
  return guarded(kSource, value,
                 [&] { return with_name(index, [&](const std::wstring& name) { return store_->get(name, value); }); });
}

HRESULT ContentsObject::put_Item(VARIANT index, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant plain;
    RETURN_IF_FAILED(plain_value(value, plain));
    return putref_Item(index, plain);
  });
}

HRESULT ContentsObject::putref_Item(VARIANT index, VARIANT value) {
  return with_name(index, [&](const std::wstring& name) { return store_->put(name, value); });
}

HRESULT ContentsObject::Remove(VARIANT index) {
  return with_name(index, [&](const std::wstring& name) { return store_->remove(name); });
}

HRESULT ContentsObject::RemoveAll() {
  return guarded(kSource, [&] { return store_->clear(); });
}

}  // namespace zelto
