// Takes the text of a date apart, by the grammar in date_text.h.
#pragma once

#include <optional>
#include <string_view>

namespace korlib::variants {

struct DateParts {
  std::optional<int> day;     // days since 1899-12-30
  double seconds = 0;         // of the day
  std::optional<int> offset;  // what the text's clock is ahead of UTC, in seconds; none: local time
};

// `this_year` is the year of a date that names none. Nothing for text that is not a date.
std::optional<DateParts> parse_date_parts(std::wstring_view text, int this_year);

}  // namespace korlib::variants
