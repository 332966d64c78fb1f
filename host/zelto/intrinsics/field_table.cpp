#include "intrinsics/field_table.h"

#include "base/letter_case.h"

namespace zelto {

void FieldTable::add(std::wstring_view name, std::wstring value) {
  const auto [place, is_new] = places_.try_emplace(base::folded(name), fields_.size());
  if (is_new) fields_.push_back({std::wstring(name), {}});
  fields_[place->second].values.push_back(std::move(value));
}

const Field* FieldTable::find(std::wstring_view name) const {
  const auto place = places_.find(base::folded(name));
  return place == places_.end() ? nullptr : &fields_[place->second];
}

}  // namespace zelto
