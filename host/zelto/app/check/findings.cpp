#include "app/check/findings.h"

#include <algorithm>

#include "text/characters.h"

namespace zelto::check {

void Findings::add(Place place, Severity severity, const std::string& text) {
  // The beginning of the file where a place is not known.
  place.line = std::max(place.line, 1);
  place.column = std::max(place.column, 1);
  all_.insert({std::move(place), severity, plain_line(text)});
}

std::size_t Findings::count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count(all_, severity, &Finding::severity));
}

bool Findings::has_error_in(const std::string& file) const {
  const auto first = all_.lower_bound(Finding{{file, 0, 0}, Severity::error, {}});
  return std::any_of(first, all_.end(),
                     [&](const Finding& one) { return one.place.file == file && one.severity == Severity::error; });
}

}  // namespace zelto::check
