#include "classes/dictionary.h"

#include <string>

#include <korlib_host/enumerator.h>

#include "classes/script_errors.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"Scripting.Dictionary";

// A key or value that owns what it holds, references followed.
// An omitted argument that a component handed on is no value that anybody could use: the empty one is kept.
HRESULT own(const VARIANT& value, CComVariant& owned) {
  return is_omitted(value) ? S_OK : VariantCopyInd(&owned, &value);
}

HRESULT own_key(const VARIANT& key, CComVariant& owned, KeyView& view) {
  RETURN_IF_FAILED(own(key, owned));
  const HRESULT hr = view_key(owned, view);
  if (hr != DISP_E_TYPEMISMATCH) return hr;
  return raise(E_INVALIDARG, kSource, L"This value cannot be a key of a dictionary.");
}

std::wstring quoted(const VARIANT& key) {
  CComVariant text;
  if (FAILED(VariantChangeType(&text, &key, 0, VT_BSTR))) return L"";
  return L" \"" + std::wstring(view_of(text.bstrVal).substr(0, 100)) + L"\"";
}

HRESULT missing(const VARIANT& key) {
  return raise(kElementNotFound, kSource, L"The dictionary has no key" + quoted(key) + L".");
}

HRESULT existing(const VARIANT& key) {
  return raise(kKeyExists, kSource, L"The dictionary already has the key" + quoted(key) + L".");
}

}  // namespace

std::span<const Member> Dictionary::members() {
  static constexpr Member table[] = {
      property<&Dictionary::get_Item, &Dictionary::put_Item, &Dictionary::putref_Item>(L"Item").is_default(),
      method<&Dictionary::Add>(L"Add"),
      method<&Dictionary::Exists>(L"Exists"),
      property<&Dictionary::get_Count>(L"Count"),
      method<&Dictionary::Keys>(L"Keys"),
      method<&Dictionary::Items>(L"Items"),
      property<nullptr, &Dictionary::put_Key>(L"Key"),
      method<&Dictionary::Remove>(L"Remove"),
      method<&Dictionary::RemoveAll>(L"RemoveAll"),
      property<&Dictionary::get_CompareMode, &Dictionary::put_CompareMode>(L"CompareMode"),
      new_enum<&Dictionary::get__NewEnum>(),
  };
  return table;
}

STDMETHODIMP Dictionary::get_Item(VARIANT key, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    CComVariant owned;
    KeyView view;
    RETURN_IF_FAILED(own_key(key, owned, view));
    const std::lock_guard guard(lock_);
    if (const OrderedTable::Entry* entry = table_.find(view)) return VariantCopy(value, &entry->value);
    table_.insert(std::move(owned), view, CComVariant());
    return S_OK;
  });
}

STDMETHODIMP Dictionary::put_Item(VARIANT key, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant owned_key;
    CComVariant owned_value;  // after the exchange the old value, released behind the lock
    KeyView view;
    RETURN_IF_FAILED(own_key(key, owned_key, view));
    RETURN_IF_FAILED(own(value, owned_value));
    const std::lock_guard guard(lock_);
    if (OrderedTable::Entry* entry = table_.find(view)) {
      CComVariant old = std::move(entry->value);
      entry->value = std::move(owned_value);
      owned_value = std::move(old);
      return S_OK;
    }
    table_.insert(std::move(owned_key), view, std::move(owned_value));
    return S_OK;
  });
}

STDMETHODIMP Dictionary::putref_Item(VARIANT key, VARIANT value) { return put_Item(key, value); }

STDMETHODIMP Dictionary::Add(VARIANT key, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant owned_key;
    CComVariant owned_value;
    KeyView view;
    RETURN_IF_FAILED(own_key(key, owned_key, view));
    RETURN_IF_FAILED(own(value, owned_value));
    bool is_new = false;
    {
      const std::lock_guard guard(lock_);
      is_new = !table_.find(view);
      if (is_new) table_.insert(std::move(owned_key), view, std::move(owned_value));
    }
    return is_new ? S_OK : existing(key);
  });
}

STDMETHODIMP Dictionary::Exists(VARIANT key, VARIANT_BOOL* exists) {
  return guarded(kSource, exists, [&]() -> HRESULT {
    CComVariant owned;
    KeyView view;
    RETURN_IF_FAILED(own_key(key, owned, view));
    const std::lock_guard guard(lock_);
    *exists = table_.find(view) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  });
}

STDMETHODIMP Dictionary::get_Count(LONG* count) {
  if (!count) return E_POINTER;
  const std::lock_guard guard(lock_);
  *count = static_cast<LONG>(table_.size());
  return S_OK;
}

std::vector<CComVariant> Dictionary::snapshot(Part part) {
  const std::lock_guard guard(lock_);
  std::vector<CComVariant> values;
  values.reserve(table_.size());
  table_.for_each(
      [&](const OrderedTable::Entry& entry) { values.push_back(part == Part::kKey ? entry.key : entry.value); });
  return values;
}

HRESULT Dictionary::to_array(Part part, VARIANT* array) {
  if (!array) return E_POINTER;
  VariantInit(array);
  std::vector<CComVariant> values = snapshot(part);
  CComSafeArray filled(VT_VARIANT, static_cast<ULONG>(values.size()));
  if (!filled) return E_OUTOFMEMORY;
  for (std::size_t i = 0; i < values.size(); ++i) values[i].detach_to(filled.data<VARIANT>() + i);
  filled.detach_to(array);
  return S_OK;
}

STDMETHODIMP Dictionary::Keys(VARIANT* keys) try { return to_array(Part::kKey, keys); } catch (...) {
  return hresult_from_exception(kSource);
}

STDMETHODIMP Dictionary::Items(VARIANT* items) try { return to_array(Part::kValue, items); } catch (...) {
  return hresult_from_exception(kSource);
}

STDMETHODIMP Dictionary::put_Key(VARIANT key, VARIANT new_key) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant owned_key;
    CComVariant owned_new;
    KeyView view;
    KeyView new_view;
    RETURN_IF_FAILED(own_key(key, owned_key, view));
    RETURN_IF_FAILED(own_key(new_key, owned_new, new_view));
    CComVariant old;
    bool was_found = false;
    bool is_taken = false;
    {
      const std::lock_guard guard(lock_);
      OrderedTable::Entry* entry = table_.find(view);
      const OrderedTable::Entry* other = table_.find(new_view);
      was_found = entry != nullptr;
      is_taken = other && other != entry;
      if (was_found && !is_taken) old = table_.rename(*entry, std::move(owned_new), new_view);
    }
    if (!was_found) return missing(key);
    return is_taken ? existing(new_key) : S_OK;
  });
}

STDMETHODIMP Dictionary::Remove(VARIANT key) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant owned;
    KeyView view;
    RETURN_IF_FAILED(own_key(key, owned, view));
    OrderedTable::Entry gone;
    bool was_found = false;
    {
      const std::lock_guard guard(lock_);
      if (OrderedTable::Entry* entry = table_.find(view)) {
        was_found = true;
        gone = table_.take(*entry);
      }
    }
    return was_found ? S_OK : missing(key);
  });
}

STDMETHODIMP Dictionary::RemoveAll() {
  return guarded(kSource, [&]() -> HRESULT {
    std::vector<OrderedTable::Entry> gone;
    const std::lock_guard guard(lock_);
    gone = table_.take_all();
    return S_OK;
  });
}

STDMETHODIMP Dictionary::get_CompareMode(LONG* mode) {
  if (!mode) return E_POINTER;
  const std::lock_guard guard(lock_);
  *mode = table_.ignores_case() ? 1 : 0;
  return S_OK;
}

STDMETHODIMP Dictionary::put_CompareMode(LONG mode) {
  if (mode != 0 && mode != 1) {
    return raise(E_INVALIDARG, kSource, L"CompareMode is 0 (binary) or 1 (text).");
  }
  {
    const std::lock_guard guard(lock_);
    if (table_.size() == 0) {
      table_.take_all();
      table_.ignore_case(mode == 1);
      return S_OK;
    }
  }
  return raise(E_INVALIDARG, kSource, L"CompareMode can be set only while the dictionary is empty.");
}

STDMETHODIMP Dictionary::get__NewEnum(IUnknown** keys) {
  return guarded(kSource, [&]() -> HRESULT { return make_enumerator(snapshot(Part::kKey), keys); });
}

}  // namespace korlib
