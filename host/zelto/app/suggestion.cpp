#include "app/suggestion.h"

#include "language/name_distance.h"
#include "text/charset.h"

namespace zelto {

std::string suggestion(const std::vector<std::string>& words, std::string_view mistyped) {
  std::vector<std::wstring> names;
  names.reserve(words.size());
  for (const std::string& word : words) names.push_back(to_wide(word));
  const std::wstring nearest = language::nearest_name(names, to_wide(mistyped));
  return nearest.empty() ? std::string() : "did you mean '" + to_utf8(nearest) + "'?";
}

}  // namespace zelto
