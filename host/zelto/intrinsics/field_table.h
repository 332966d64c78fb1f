// The names and values of one request collection, and how a form or a query string says them:
// "application/x-www-form-urlencoded".
#pragma once

#include <korlib/types.h>

#include <optional>
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
class FieldTable : public base::OrderedTable<&Field::name, base::FoldedHash, base::FoldedEqual, base::ByPlaces> {
 public:
  void add(std::wstring_view name, std::wstring value);
  // The collection as it was sent, "a=1&b=2".
  std::wstring raw;
};

inline constexpr std::size_t kMaxFormFields = 1000;

// The fields of "a=1&b=2" in the code page's characters. Nothing when there are more than kMaxFormFields of them.
std::optional<FieldTable> parse_form_fields(std::string_view text, LONG code_page);

}  // namespace zelto
