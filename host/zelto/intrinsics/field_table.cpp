#include "intrinsics/field_table.h"

namespace zelto {

void FieldTable::add(std::wstring_view name, std::wstring value) {
  Field* field = fields_.find(name);
  if (!field) field = &fields_.add({std::wstring(name), {}});
  field->values.push_back(std::move(value));
}

}  // namespace zelto
