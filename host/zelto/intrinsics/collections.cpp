#include "intrinsics/collections.h"

#include <korlib_host/enumerator.h>

#include "intrinsics/guard.h"
#include "intrinsics/variant_key.h"
#include "text/charset.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Request";

template <class Object>
void put_object(CComPtr<Object> object, VARIANT* value) {
  VariantInit(value);
  value->vt = VT_DISPATCH;
  value->pdispVal = object.detach();
}

std::wstring joined(const std::vector<std::wstring>& values) {
  std::wstring text;
  for (const std::wstring& value : values)
    text.append(text.empty() && &value == &values.front() ? L"" : L", ").append(value);
  return text;
}

// Names of fields or cookies, as an enumeration gives them.
template <class Rows>
HRESULT enumerate_names(const Rows& rows, IUnknown** names) {
  std::vector<CComVariant> values;
  values.reserve(rows.size());
  for (const auto& row : rows) values.emplace_back(std::wstring_view(row.name));
  return korlib::make_enumerator(std::move(values), names);
}

}  // namespace

std::span<const korlib::Member> StringList::members() {
  static constexpr korlib::Member table[] = {
      property<&StringList::get_Item>(L"_Default").is_default().optional(0),
      property<&StringList::get_Item>(L"Item").optional(0).is_called(),
      property<&StringList::get_Count>(L"Count"),
      new_enum<&StringList::get__NewEnum>(),
  };
  return table;
}

HRESULT StringList::get_Item(VARIANT index, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&]() -> HRESULT {
    if (index.vt == VT_ERROR) {
      if (field_) put_text(joined(field_->values), value);
      return S_OK;
    }
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, field_ ? field_->values.size() : 0, place));
    put_text(field_->values[place], value);
    return S_OK;
  });
}

HRESULT StringList::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = field_ ? static_cast<int>(field_->values.size()) : 0;
  return S_OK;
}

HRESULT StringList::get__NewEnum(IUnknown** values) {
  if (!values) return E_POINTER;
  *values = nullptr;
  return guarded(kSource, [&] {
    std::vector<CComVariant> texts;
    if (field_) {
      for (const std::wstring& text : field_->values) texts.emplace_back(std::wstring_view(text));
    }
    return korlib::make_enumerator(std::move(texts), values);
  });
}

std::span<const korlib::Member> FieldCollection::members() {
  static constexpr korlib::Member table[] = {
      property<&FieldCollection::get_Item>(L"_Default").is_default().optional(0),
      property<&FieldCollection::get_Item>(L"Item").optional(0).is_called(),
      property<&FieldCollection::get_Count>(L"Count"),
      property<&FieldCollection::get_Key>(L"Key"),
      new_enum<&FieldCollection::get__NewEnum>(),
  };
  return table;
}

HRESULT FieldCollection::get_Item(VARIANT key, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&]() -> HRESULT {
    RequestState::Fields fields;
    RETURN_IF_FAILED(source_(fields));
    if (key.vt == VT_ERROR) {
      put_text(fields->raw, value);
      return S_OK;
    }
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, fields->fields().size(), wanted));
    const Field* field = wanted.place ? &fields->fields()[*wanted.place] : fields->find(wanted.name);
    put_object(korlib::make<StringList>(std::move(fields), field), value);
    return S_OK;
  });
}

HRESULT FieldCollection::get__NewEnum(IUnknown** names) {
  if (!names) return E_POINTER;
  *names = nullptr;
  return guarded(kSource, [&]() -> HRESULT {
    RequestState::Fields fields;
    RETURN_IF_FAILED(source_(fields));
    return enumerate_names(fields->fields(), names);
  });
}

HRESULT FieldCollection::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return guarded(kSource, [&]() -> HRESULT {
    RequestState::Fields fields;
    RETURN_IF_FAILED(source_(fields));
    *count = static_cast<int>(fields->fields().size());
    return S_OK;
  });
}

HRESULT FieldCollection::get_Key(VARIANT index, VARIANT* key) {
  if (!key) return E_POINTER;
  VariantInit(key);
  return guarded(kSource, [&]() -> HRESULT {
    RequestState::Fields fields;
    RETURN_IF_FAILED(source_(fields));
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, fields->fields().size(), place));
    put_text(fields->fields()[place].name, key);
    return S_OK;
  });
}

std::span<const korlib::Member> CookieValue::members() {
  static constexpr korlib::Member table[] = {
      property<&CookieValue::get_Item>(L"_Default").is_default().optional(0),
      property<&CookieValue::get_Item>(L"Item").optional(0).is_called(),
      property<&CookieValue::get_Count>(L"Count"),
      property<&CookieValue::get_Key>(L"Key"),
      property<&CookieValue::get_HasKeys>(L"HasKeys"),
      new_enum<&CookieValue::get__NewEnum>(),
  };
  return table;
}

HRESULT CookieValue::get_Item(VARIANT key, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&]() -> HRESULT {
    if (key.vt == VT_ERROR) {
      put_text(cookie_ ? std::wstring_view(cookie_->value) : std::wstring_view(), value);
      return S_OK;
    }
    int count = 0;
    get_Count(&count);
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, static_cast<std::size_t>(count), wanted));
    if (!cookie_) {
      put_text(L"", value);
      return S_OK;
    }
    if (wanted.place && cookie_->keys.fields().empty()) {
      put_text(cookie_->value, value);
      return S_OK;
    }
    const Field* field = wanted.place ? &cookie_->keys.fields()[*wanted.place] : cookie_->keys.find(wanted.name);
    put_text(field ? joined(field->values) : std::wstring(), value);
    return S_OK;
  });
}

HRESULT CookieValue::get__NewEnum(IUnknown** names) {
  if (!names) return E_POINTER;
  *names = nullptr;
  return guarded(kSource,
                 [&] { return enumerate_names(cookie_ ? cookie_->keys.fields() : std::vector<Field>(), names); });
}

HRESULT CookieValue::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = 0;
  if (!cookie_) return S_OK;
  const std::size_t keys = cookie_->keys.fields().size();
  *count = keys == 0 ? 1 : static_cast<int>(keys);
  return S_OK;
}

HRESULT CookieValue::get_Key(VARIANT index, VARIANT* key) {
  if (!key) return E_POINTER;
  VariantInit(key);
  return guarded(kSource, [&]() -> HRESULT {
    if (!cookie_) return DISP_E_BADINDEX;
    const std::vector<Field>& fields = cookie_->keys.fields();
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, fields.size(), place));
    put_text(fields[place].name, key);
    return S_OK;
  });
}

HRESULT CookieValue::get_HasKeys(VARIANT_BOOL* has_keys) {
  if (!has_keys) return E_POINTER;
  *has_keys = cookie_ && !cookie_->keys.fields().empty() ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

std::span<const korlib::Member> CookieCollection::members() {
  static constexpr korlib::Member table[] = {
      property<&CookieCollection::get_Item>(L"_Default").is_default().optional(0),
      property<&CookieCollection::get_Item>(L"Item").optional(0).is_called(),
      property<&CookieCollection::get_Count>(L"Count"),
      property<&CookieCollection::get_Key>(L"Key"),
      new_enum<&CookieCollection::get__NewEnum>(),
  };
  return table;
}

HRESULT CookieCollection::get_Item(VARIANT key, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&]() -> HRESULT {
    const auto& cookies = page_->request.cookies();
    if (key.vt == VT_ERROR) {
      const std::string* header = page_->request.http().header("Cookie");
      put_text(header ? to_wide(*header) : std::wstring(), value);
      return S_OK;
    }
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, cookies.size(), wanted));
    const ReceivedCookie* cookie = wanted.place ? &cookies[*wanted.place] : find_named(cookies, wanted.name);
    CComPtr<CookieValue> object = korlib::make<CookieValue>(page_, cookie);
    VariantInit(value);
    value->vt = VT_DISPATCH;
    value->pdispVal = static_cast<ZeltoTypeLibrary::IRequestDictionary*>(object.detach());
    return S_OK;
  });
}

HRESULT CookieCollection::get__NewEnum(IUnknown** names) {
  if (!names) return E_POINTER;
  *names = nullptr;
  return guarded(kSource, [&] { return enumerate_names(page_->request.cookies(), names); });
}

HRESULT CookieCollection::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return guarded(kSource, [&] {
    *count = static_cast<int>(page_->request.cookies().size());
    return S_OK;
  });
}

HRESULT CookieCollection::get_Key(VARIANT index, VARIANT* key) {
  if (!key) return E_POINTER;
  VariantInit(key);
  return guarded(kSource, [&]() -> HRESULT {
    const auto& cookies = page_->request.cookies();
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, cookies.size(), place));
    put_text(cookies[place].name, key);
    return S_OK;
  });
}

}  // namespace zelto
