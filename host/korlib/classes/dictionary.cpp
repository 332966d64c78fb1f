#include "classes/dictionary.h"

#include <new>
#include <optional>
#include <string>

#include <korlib_host/dictionaries.h>
#include <korlib_host/enumerator.h>
#include <korlib_host/kept_values.h>
#include <korlib_host/own_strings.h>
#include <korlib_host/results.h>

#include "classes/script_errors.h"
#include "strings/write_over.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"Scripting.Dictionary";
constexpr UINT kShortText = 1024;  // bytes

HRESULT load(const VARIANT& value, WantedKey& key) {
  const HRESULT hr = key.load(value);
  if (hr != DISP_E_TYPEMISMATCH) return hr;
  return raise(E_INVALIDARG, kSource, L"This value cannot be a key of a dictionary.");
}

// A value that owns what it holds, references followed. An omitted argument that a component handed on is not a value
// that anybody could use: the empty one is kept.
HRESULT own(const VARIANT& value, CComVariant& owned) {
  return is_omitted(value) ? S_OK : VariantCopyInd(&owned, &value);
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

Dictionary* Dictionary::behind(IUnknown* object) noexcept {
  const CComQIPtr<IHostDictionary> found(object);
  return static_cast<Dictionary*>(found.get());
}

std::vector<CComPtr<IUnknown>> Dictionary::objects() {
  std::vector<CComPtr<IUnknown>> found;
  const auto add = [&found](IUnknown* object) { found.emplace_back(object); };
  const std::lock_guard guard(lock_);
  for (const Entry& entry : table_) {
    for_each_object(entry.key.value(), add);
    for_each_object(entry.value, add);
  }
  return found;
}

HRESULT Dictionary::admit(const VARIANT& value) {
  if (!may_hold_objects(value)) return S_OK;
  if (is_shared_) {
    if (korlib_host::share(value)) return S_OK;
    return raise(E_INVALIDARG, kSource,
                 L"A dictionary that the Application keeps takes plain values and dictionaries only.");
  }
  const auto look = [this](IUnknown* object) {
    const Dictionary* const held = object ? behind(object) : nullptr;
    if (!held) return;
    holds_dictionaries_ = true;
    if (held->holds_dictionaries_) enter();  // perhaps it leads back here; if it is this one, it has just been said to
  };
  for_each_object(value, look);
  return S_OK;
}

// Those that are in one another end one after the other: each in the end of the one around it would take as much stack
// as they are deep.
void Dictionary::on_last_release() {
  thread_local bool is_ending = false;
  thread_local Dictionary* ended = nullptr;
  leave();
  next_ended_ = std::exchange(ended, this);
  if (std::exchange(is_ending, true)) return;
  while (Dictionary* const one = ended) {
    ended = one->next_ended_;
    delete one;
  }
  is_ending = false;
}

Dictionary::Entry* Dictionary::find(WantedKey& key) {
  constexpr std::size_t kFew = 8;
  if (table_.size() <= kFew) {
    return table_.find_if([&](const Entry& entry) { return key.is_same(entry.key, ignores_case_); });
  }
  key.prepare(ignores_case_);
  return table_.find(key);
}

// The caller still holds what key and value refer to, so a failure here releases nothing for the last time.
HRESULT Dictionary::add(WantedKey& key, CComVariant value) {
  DictionaryKey kept;
  key.prepare(ignores_case_);
  RETURN_IF_FAILED(kept.copy(key));
  table_.add({std::move(kept), std::move(value)});
  return S_OK;
}

STDMETHODIMP Dictionary::get_Item(VARIANT key, VARIANT* value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    WantedKey wanted;
    RETURN_IF_FAILED(load(key, wanted));
    RETURN_IF_FAILED(admit(wanted.value()));
    const std::lock_guard guard(lock_);
    if (const Entry* entry = find(wanted)) return VariantCopy(value, &entry->value);
    return add(wanted, {});
  });
}

HRESULT Dictionary::store(const VARIANT& key, const VARIANT& value, bool may_replace) {
  return guarded(kSource, [&]() -> HRESULT {
    WantedKey wanted;
    CComVariant owned;  // after the exchange the old value, released after the lock has gone
    // A short text is copied with the lock held: that calls nobody, and there may be a string to copy it into.
    const bool is_text = value.vt == VT_BSTR && korlib_host::byte_length_of(value.bstrVal) <= kShortText;
    RETURN_IF_FAILED(load(key, wanted));
    if (!is_text) RETURN_IF_FAILED(own(value, owned));
    RETURN_IF_FAILED(admit(wanted.value()));
    RETURN_IF_FAILED(admit(owned));
    const bool is_full = is_shared_ && !korlib_host::may_keep();
    bool is_refused = false;
    bool has_room = true;
    {
      const std::lock_guard guard(lock_);
      Entry* const entry = find(wanted);
      is_refused = entry && !may_replace;
      if (is_text) {
        const bool has_string = entry && entry->value.vt == VT_BSTR;  // which nobody else refers to
        if (has_string && may_replace && !is_full && strings::write_over(value.bstrVal, entry->value.bstrVal))
          return S_OK;
        RETURN_IF_FAILED(own(value, owned));
      }
      // A number takes the place of another value all the same.
      has_room = !is_full || (entry && !korlib_host::owns_memory(owned));
      if (!entry && has_room) RETURN_IF_FAILED(add(wanted, std::move(owned)));
      if (entry && may_replace && has_room) std::swap(entry->value, owned);
    }
    if (is_refused) return existing(key);
    return has_room ? S_OK : korlib_host::raise_full(kSource);
  });
}

STDMETHODIMP Dictionary::put_Item(VARIANT key, VARIANT value) { return store(key, value, true); }

STDMETHODIMP Dictionary::putref_Item(VARIANT key, VARIANT value) { return store(key, value, true); }

STDMETHODIMP Dictionary::Add(VARIANT key, VARIANT value) { return store(key, value, false); }

STDMETHODIMP Dictionary::Exists(VARIANT key, VARIANT_BOOL* exists) {
  return guarded(kSource, exists, [&]() -> HRESULT {
    WantedKey wanted;
    RETURN_IF_FAILED(load(key, wanted));
    const std::lock_guard guard(lock_);
    return give(find(wanted) != nullptr, exists);
  });
}

STDMETHODIMP Dictionary::get_Count(LONG* count) {
  const std::lock_guard guard(lock_);
  return give(static_cast<LONG>(table_.size()), count);
}

std::vector<CComVariant> Dictionary::snapshot(Part part) {
  const std::lock_guard guard(lock_);
  std::vector<CComVariant> values;
  values.reserve(table_.size());
  for (const Entry& entry : table_) {
    const VARIANT& value = part == Part::key ? entry.key.value() : entry.value;
    const HRESULT hr = VariantCopy(&values.emplace_back(), &value);
    if (FAILED(hr)) throw std::bad_alloc();  // a value that is held can be copied
  }
  return values;
}

HRESULT Dictionary::to_array(Part part, VARIANT* array) {
  return guarded(kSource, array, [&]() -> HRESULT {
    std::vector<CComVariant> values = snapshot(part);
    CComSafeArray filled(VT_VARIANT, static_cast<ULONG>(values.size()));
    if (!filled) return E_OUTOFMEMORY;
    for (std::size_t i = 0; i < values.size(); ++i) values[i].detach_to(filled.data<VARIANT>() + i);
    filled.detach_to(array);
    return S_OK;
  });
}

STDMETHODIMP Dictionary::Keys(VARIANT* keys) { return to_array(Part::key, keys); }

STDMETHODIMP Dictionary::Items(VARIANT* items) { return to_array(Part::value, items); }

STDMETHODIMP Dictionary::put_Key(VARIANT key, VARIANT new_key) {
  return guarded(kSource, [&]() -> HRESULT {
    WantedKey wanted;
    WantedKey fresh;
    RETURN_IF_FAILED(load(key, wanted));
    RETURN_IF_FAILED(load(new_key, fresh));
    RETURN_IF_FAILED(admit(fresh.value()));
    bool was_found = false;
    bool is_taken = false;
    std::optional<DictionaryKey> old;  // goes when the lock is free: its last release may come back here
    {
      const std::lock_guard guard(lock_);
      Entry* const entry = find(wanted);
      const Entry* const other = find(fresh);
      was_found = entry != nullptr;
      is_taken = other && other != entry;
      if (was_found && !is_taken) {
        DictionaryKey kept;
        fresh.prepare(ignores_case_);
        RETURN_IF_FAILED(kept.copy(fresh));
        old = table_.rename(*entry, std::move(kept));
      }
    }
    if (!was_found) return missing(key);
    return is_taken ? existing(new_key) : S_OK;
  });
}

STDMETHODIMP Dictionary::Remove(VARIANT key) {
  return guarded(kSource, [&]() -> HRESULT {
    WantedKey wanted;
    RETURN_IF_FAILED(load(key, wanted));
    std::optional<Entry> gone;
    {
      const std::lock_guard guard(lock_);
      if (Entry* entry = find(wanted)) gone = table_.take(*entry);
    }
    return gone ? S_OK : missing(key);
  });
}

STDMETHODIMP Dictionary::RemoveAll() {
  Table gone;  // the entries are released when the lock is free
  const std::lock_guard guard(lock_);
  std::swap(gone, table_);
  return S_OK;
}

STDMETHODIMP Dictionary::get_CompareMode(LONG* mode) {
  const std::lock_guard guard(lock_);
  return give(ignores_case_ ? 1 : 0, mode);
}

STDMETHODIMP Dictionary::put_CompareMode(LONG mode) {
  if (mode != 0 && mode != 1) return raise(E_INVALIDARG, kSource, L"CompareMode is 0 (binary) or 1 (text).");
  {
    const std::lock_guard guard(lock_);
    if (table_.empty()) {
      ignores_case_ = mode == 1;
      return S_OK;
    }
  }
  return raise(E_INVALIDARG, kSource, L"CompareMode can be set only while the dictionary is empty.");
}

STDMETHODIMP Dictionary::get__NewEnum(IUnknown** keys) {
  return guarded(kSource, keys, [&] { return make_enumerator(snapshot(Part::key), keys); });
}

}  // namespace korlib
