#include "app/suggestion.h"

#include "base/near_names.h"
#include "text/charset.h"

namespace zelto {

std::string nearest(const std::vector<std::string>& words, std::string_view mistyped) {
  std::vector<std::wstring> names;
  names.reserve(words.size());
  for (const std::string& word : words) names.push_back(to_wide(word));
  return to_utf8(base::nearest_name(names, to_wide(mistyped)));
}

std::string suggestion(const std::vector<std::string>& words, std::string_view mistyped) {
  const std::string word = nearest(words, mistyped);
  return word.empty() ? word : "did you mean '" + word + "'?";
}

}  // namespace zelto
