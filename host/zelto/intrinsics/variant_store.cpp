#include "intrinsics/variant_store.h"

#include "base/letter_case.h"
#include "script/script_object.h"

namespace zelto {

HRESULT VariantTable::get(std::wstring_view name, VARIANT* value) const {
  VariantInit(value);
  const auto place = places_.find(base::folded(name));
  return place == places_.end() ? S_OK : VariantCopy(value, &entries_[place->second].value);
}

void VariantTable::put(std::wstring_view name, CComVariant value) {
  const auto [place, is_new] = places_.try_emplace(base::folded(name), entries_.size());
  if (is_new) {
    entries_.push_back({std::wstring(name), std::move(value)});
    return;
  }
  // The old value dies after the table is whole again: its last breath may come back here.
  const CComVariant old = std::move(entries_[place->second].value);
  entries_[place->second].value = std::move(value);
}

void VariantTable::remove(std::wstring_view name) {
  const auto found = places_.find(base::folded(name));
  if (found == places_.end()) return;
  const std::size_t place = found->second;
  places_.erase(found);
  for (auto& [key, later] : places_) {
    if (later > place) --later;
  }
  const Entry removed = std::move(entries_[place]);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
}

void VariantTable::clear() {
  const std::vector<Entry> removed = std::move(entries_);
  entries_.clear();
  places_.clear();
}

std::vector<std::wstring> VariantTable::names() const {
  std::vector<std::wstring> names;
  names.reserve(entries_.size());
  for (const Entry& entry : entries_) names.push_back(entry.name);
  return names;
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
