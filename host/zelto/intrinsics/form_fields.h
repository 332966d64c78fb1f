// The fields of a submitted form, or of a query string: "application/x-www-form-urlencoded".
#pragma once

#include <korlib/types.h>

#include <optional>
#include <string_view>

#include "intrinsics/field_table.h"

namespace zelto {

inline constexpr std::size_t kMaxFormFields = 1000;

// The fields of "a=1&b=2" in the code page's characters. Nothing when there are more than kMaxFormFields of them.
std::optional<FieldTable> parse_form_fields(std::string_view text, LONG code_page);

}  // namespace zelto
