// The names and values of one request collection.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/keyed_hash.h"
#include "base/ordered_table.h"

namespace zelto {

struct Field {
  std::wstring name;  // as first sent
  std::vector<std::wstring> values;
};

// Fields in the order in which their names first came; names are found in any letter case.
class FieldTable {
 public:
  using Fields = base::OrderedTable<&Field::name, base::FoldedHash, base::FoldedEqual, base::ByPlaces>;

  void add(std::wstring_view name, std::wstring value);
  // Null when there is no such name; valid while the table is not changed.
  const Field* find(std::wstring_view name) const { return fields_.find(name); }
  const Fields& fields() const { return fields_; }

  // The collection as it was sent, "a=1&b=2".
  std::wstring raw;

 private:
  Fields fields_;
};

}  // namespace zelto
