#include "app/suggestion.h"

#include "base/near_names.h"
#include "text/charset.h"

namespace zelto {

std::string suggestion(const std::vector<std::string>& words, std::string_view mistyped) {
  std::vector<std::wstring> names;
  names.reserve(words.size());
  for (const std::string& word : words) names.push_back(to_wide(word));
  return to_utf8(base::did_you_mean(names, to_wide(mistyped)));
}

}  // namespace zelto
