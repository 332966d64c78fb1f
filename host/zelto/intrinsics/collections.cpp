#include "intrinsics/collections.h"

#include <boost/algorithm/string/join.hpp>

#include "platform/type_libraries.h"
#include "text/charset.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Request";

const std::vector<std::wstring> kNoValues;

std::wstring joined(const std::vector<std::wstring>& values) { return boost::algorithm::join(values, L", "); }

}  // namespace

StringList::StringList(std::shared_ptr<const Field> field)
    : field_(std::move(field)), values_(field_ ? field_->values : kNoValues) {}

std::span<const korlib::Member> StringList::members() { return kStringListMembers<StringList>; }

HRESULT StringList::get_Item(VARIANT index, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    if (index.vt == VT_ERROR) return values_.empty() ? S_OK : give_text(joined(values_), value);
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(index, values_.size(), place));
    return give_text(values_[place], value);
  });
}

HRESULT StringList::get_Count(int* count) { return give(static_cast<int>(values_.size()), count); }

HRESULT StringList::get__NewEnum(IUnknown** values) {
  return guarded(kSource, values, [&] { return give_texts(values_, values); });
}

std::span<const korlib::Member> FieldCollection::members() { return kRequestDictionaryMembers<FieldCollection>; }

HRESULT FieldCollection::names(Names& all) {
  RequestState::Fields fields;
  RETURN_IF_FAILED((page_->request.*source_)(fields));
  all = names_of(*fields);
  return S_OK;
}

HRESULT FieldCollection::get_Item(VARIANT key, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    if (key.vt == VT_BSTR && source_ == &RequestState::server_variables) {
      auto field = page_->request.server_variable(korlib::view_of(key.bstrVal));
      return give_object(korlib::make<StringList>(std::move(field)).get(), value);
    }
    RequestState::Fields fields;
    RETURN_IF_FAILED((page_->request.*source_)(fields));
    if (key.vt == VT_ERROR) return give_text(fields->raw, value);
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, fields->size(), wanted));
    const Field* field = wanted.place ? &(*fields)[*wanted.place] : fields->find(wanted.name);
    return give_object(korlib::make<StringList>(std::shared_ptr<const Field>(fields, field)).get(), value);
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

HRESULT CookieValue::names(Names& all) {
  if (cookie_) all = names_of(cookie_->keys);
  return S_OK;
}

HRESULT CookieValue::get_Item(VARIANT key, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    if (key.vt == VT_ERROR) return give_text(cookie_ ? cookie_->value : std::wstring(), value);
    int count = 0;
    get_Count(&count);
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, static_cast<std::size_t>(count), wanted));
    if (!cookie_) return give_text(L"", value);
    const FieldTable& keys = cookie_->keys;
    if (wanted.place && keys.empty()) return give_text(cookie_->value, value);
    const Field* field = wanted.place ? &keys[*wanted.place] : keys.find(wanted.name);
    return give_text(field ? joined(field->values) : std::wstring(), value);
  });
}

HRESULT CookieValue::get_Count(int* count) {
  const std::size_t keys = cookie_ ? cookie_->keys.size() : 0;
  return give(keys == 0 && cookie_ ? 1 : static_cast<int>(keys), count);
}

HRESULT CookieValue::get_Key(VARIANT index, VARIANT* key) {
  if (cookie_) return NamedCollection::get_Key(index, key);
  return guarded(kSource, key, [] { return DISP_E_BADINDEX; });
}

HRESULT CookieValue::get_HasKeys(VARIANT_BOOL* has_keys) {
  return give_bool(cookie_ && !cookie_->keys.empty(), has_keys);
}

std::span<const korlib::Member> CookieCollection::members() { return kRequestDictionaryMembers<CookieCollection>; }

HRESULT CookieCollection::names(Names& all) {
  all = names_of(page_->request.cookies());
  return S_OK;
}

HRESULT CookieCollection::get_Item(VARIANT key, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    const auto& cookies = page_->request.cookies();
    if (key.vt == VT_ERROR) {
      const std::string* header = page_->request.http().header("Cookie");
      return give_text(header ? to_wide(*header) : std::wstring(), value);
    }
    VariantKey wanted;
    RETURN_IF_FAILED(read_key(key, cookies.size(), wanted));
    const ReceivedCookie* cookie = wanted.place ? &cookies[*wanted.place] : cookies.find(wanted.name);
    return give_object(static_cast<IRequestDictionary*>(korlib::make<CookieValue>(page_, cookie).get()), value);
  });
}

}  // namespace zelto
