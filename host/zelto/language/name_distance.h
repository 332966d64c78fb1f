// Which name somebody meant who mistyped it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zelto::language {

// A longer name is not looked for.
inline constexpr std::size_t kLongestMistypedName = 64;

// How many letters have to be changed, added, left out or exchanged with their neighbour to make the one name of
// the other; letter case does not count.
std::size_t name_distance(std::wstring_view a, std::wstring_view b);

// The name that is nearest to the wanted one; empty when none differs in at most a third of its letters and one.
std::wstring nearest_name(const std::vector<std::wstring>& names, std::wstring_view wanted);

}  // namespace zelto::language
