// The names and values of one request collection.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zelto {

struct Field {
  std::wstring name;  // as first sent
  std::vector<std::wstring> values;
};

// Fields in the order in which their names first came; names are found in any letter case.
class FieldTable {
 public:
  void add(std::wstring_view name, std::wstring value);
  // Null when there is no such name; valid while the table is not changed.
  const Field* find(std::wstring_view name) const;
  const std::vector<Field>& fields() const { return fields_; }

  // The collection as it was sent, "a=1&b=2".
  std::wstring raw;

 private:
  std::vector<Field> fields_;
  std::unordered_map<std::wstring, std::size_t> places_;
};

}  // namespace zelto
