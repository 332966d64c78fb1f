// What somebody may have meant who mistyped a word.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// "did you mean 'serve'?" when one of the words is near; else nothing.
std::string suggestion(const std::vector<std::string>& words, std::string_view mistyped);

// The word itself.
std::string nearest(const std::vector<std::string>& words, std::string_view mistyped);

}  // namespace zelto
