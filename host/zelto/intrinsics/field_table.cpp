#include "intrinsics/field_table.h"

#include <algorithm>

#include "text/charset.h"
#include "text/http_grammar.h"
#include "text/percent_coding.h"

namespace zelto {

void FieldTable::add(std::wstring_view name, std::wstring value) {
  Field* field = find(name);
  if (!field) field = &OrderedTable::add({std::wstring(name), {}});
  field->values.push_back(std::move(value));
}

std::optional<FieldTable> parse_form_fields(std::string_view text, LONG code_page) {
  FieldTable table;
  table.raw = decode(code_page, text);
  std::size_t count = 0;
  for_each_piece(text, '&', [&](std::string_view pair) {
    if (++count > kMaxFormFields) return;
    const std::size_t equals = std::min(pair.find('='), pair.size());
    const std::string_view value = pair.substr(std::min(equals + 1, pair.size()));
    table.add(decode(code_page, form_decode(pair.substr(0, equals))), decode(code_page, form_decode(value)));
  });
  return count > kMaxFormFields ? std::nullopt : std::optional(std::move(table));
}

}  // namespace zelto
