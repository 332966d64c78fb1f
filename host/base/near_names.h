// Which name somebody meant who mistyped it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace base {

// A longer name is not looked for. Of a shorter one every other short name differs in a letter or two: it is only taken
// for the same in another letter case, and two letters for three that begin with the same one.
inline constexpr std::size_t kLongestMistypedName = 64;
inline constexpr std::size_t kShortestMistypedName = 3;

// How many letters have to be changed, added, left out or exchanged with their neighbour to make the one name of
// the other; letter case does not count.
std::size_t name_distance(std::wstring_view a, std::wstring_view b);

// The name that is nearest to the wanted one; empty when none differs in at most a third of its letters: in one of
// three or four, two of five to seven. Of two letters, one of three may have been left out, but for the first.
std::wstring nearest_name(const std::vector<std::wstring>& names, std::wstring_view wanted);

// "did you mean 'serve'?", or nothing for no name.
std::wstring did_you_mean(std::wstring_view name);
// The same of the nearest one.
std::wstring did_you_mean(const std::vector<std::wstring>& names, std::wstring_view wanted);

}  // namespace base
