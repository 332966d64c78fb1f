#include "intrinsics/variant_store.h"

#include <korlib_host/dictionaries.h>
#include <korlib_host/kept_values.h>

#include "intrinsics/arguments.h"
#include "script/script_object.h"

namespace zelto {

HRESULT VariantTable::get(std::wstring_view name, VARIANT* value) const {
  VariantInit(value);
  const Entry* const entry = entries_.find(name);
  return entry ? VariantCopy(value, &entry->value) : S_OK;
}

// What goes is released when the table is whole again: an object's last release may come back here.
void VariantTable::put(std::wstring_view name, CComVariant value) {
  if (Entry* const entry = entries_.find(name)) {
    std::swap(entry->value, value);
    korlib_host::watch_for_cycles(value);
  } else {
    entries_.add({std::wstring(name), std::move(value)});
  }
}

void VariantTable::remove(std::wstring_view name) {
  Entry* const entry = entries_.find(name);
  if (!entry) return;
  const Entry removed = entries_.take(*entry);
  korlib_host::watch_for_cycles(removed.value);
}

// Those that come back in what is released stay.
void VariantTable::clear() {
  const Entries removed = std::exchange(entries_, {});
  for (const Entry& entry : removed) korlib_host::watch_for_cycles(entry.value);
}

std::vector<std::wstring> VariantTable::names() const { return names_of(entries_); }

HRESULT check_room(const VARIANT& value, bool is_new, std::wstring_view source) {
  return (!is_new && !korlib_host::owns_memory(value)) || korlib_host::may_keep() ? S_OK
                                                                                  : korlib_host::raise_full(source);
}

bool holds_script_object(const VARIANT& value) {
  switch (value.vt) {
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return value.punkVal && script::is_script_object(value.punkVal);
    case VT_ARRAY | VT_VARIANT: {
      if (!value.parray) return false;
      std::size_t count = 1;
      for (USHORT dim = 0; dim < value.parray->cDims; ++dim) count *= value.parray->rgsabound[dim].cElements;
      const auto* elements = static_cast<const VARIANT*>(value.parray->pvData);
      for (std::size_t i = 0; i < count; ++i) {
        if (holds_script_object(elements[i])) return true;
      }
      return false;
    }
    case VT_BYREF | VT_VARIANT:
      return value.pvarVal && holds_script_object(*value.pvarVal);
    default:
      return false;
  }
}

}  // namespace zelto
