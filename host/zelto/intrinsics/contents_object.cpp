#include "intrinsics/contents_object.h"

#include <korlib_host/enumerator.h>

#include "intrinsics/guard.h"
#include "intrinsics/variant_key.h"

namespace zelto {

namespace {
constexpr std::wstring_view kSource = L"Contents";
}

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

HRESULT ContentsObject::name_of(const VARIANT& index, std::wstring& name) {
  std::vector<std::wstring> names;
  RETURN_IF_FAILED(store_->names(names));
  VariantKey key;
  RETURN_IF_FAILED(read_key(index, names.size(), key));
  name = key.place ? names[*key.place] : key.name;
  return S_OK;
}

HRESULT ContentsObject::get_Item(VARIANT index, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&]() -> HRESULT {
    std::wstring name;
    RETURN_IF_FAILED(name_of(index, name));
    return store_->get(name, value);
  });
}

HRESULT ContentsObject::put_Item(VARIANT index, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant plain;
    RETURN_IF_FAILED(plain_value(value, plain));
    return putref_Item(index, plain);
  });
}

HRESULT ContentsObject::putref_Item(VARIANT index, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    std::wstring name;
    RETURN_IF_FAILED(name_of(index, name));
    return store_->put(name, value);
  });
}

HRESULT ContentsObject::get_Key(VARIANT index, VARIANT* key) {
  if (!key) return E_POINTER;
  VariantInit(key);
  return guarded(kSource, [&]() -> HRESULT {
    std::vector<std::wstring> names;
    RETURN_IF_FAILED(store_->names(names));
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, names.size(), place));
    put_text(names[place], key);
    return S_OK;
  });
}

HRESULT ContentsObject::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return guarded(kSource, [&]() -> HRESULT {
    std::vector<std::wstring> names;
    RETURN_IF_FAILED(store_->names(names));
    *count = static_cast<int>(names.size());
    return S_OK;
  });
}

HRESULT ContentsObject::get__NewEnum(IUnknown** names) {
  if (!names) return E_POINTER;
  *names = nullptr;
  return guarded(kSource, [&]() -> HRESULT {
    std::vector<std::wstring> texts;
    RETURN_IF_FAILED(store_->names(texts));
    std::vector<CComVariant> values;
    values.reserve(texts.size());
    for (const std::wstring& text : texts) values.emplace_back(std::wstring_view(text));
    return korlib::make_enumerator(std::move(values), names);
  });
}

HRESULT ContentsObject::Remove(VARIANT index) {
  return guarded(kSource, [&]() -> HRESULT {
    std::wstring name;
    RETURN_IF_FAILED(name_of(index, name));
    return store_->remove(name);
  });
}

HRESULT ContentsObject::RemoveAll() {
  return guarded(kSource, [&] { return store_->clear(); });
}

}  // namespace zelto
