#include "base/near_names.h"

#include <algorithm>

#include "base/letter_case.h"

namespace base {

std::size_t name_distance(std::wstring_view a, std::wstring_view b) {
  const auto same = [](wchar_t x, wchar_t y) { return fold(x) == fold(y); };
  std::vector<std::size_t> before_last(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1)});
      if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
        row[j] = std::min(row[j], before_last[j - 2] + 1);
      }
    }
    before_last.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

namespace {

// Whether two letters are what is left of a name of three when one behind the first is left out.
bool lacks_a_letter(std::wstring_view wanted, std::wstring_view name) {
  return wanted.size() == 2 && name.size() == 3 && fold(wanted[0]) == fold(name[0]) && name_distance(name, wanted) == 1;
}

}  // namespace

std::wstring nearest_name(const std::vector<std::wstring>& names, std::wstring_view wanted) {
  if (wanted.size() > kLongestMistypedName) return {};
  std::wstring best;
  const bool is_short = wanted.size() < kShortestMistypedName;
  std::size_t least = is_short ? 1 : (wanted.size() + 1) / 3;  // further away it is another word
  for (const std::wstring& name : names) {
    const std::size_t distance = name_distance(name, wanted);
    if (is_short && distance > 0 && !lacks_a_letter(wanted, name)) continue;
    if (distance >= least + (best.empty() ? 1 : 0)) continue;
    least = distance;
    best = name;
  }
  return best;
}

std::wstring did_you_mean(std::wstring_view name) {
  return name.empty() ? std::wstring() : L"did you mean '" + std::wstring(name) + L"'?";
}

std::wstring did_you_mean(const std::vector<std::wstring>& names, std::wstring_view wanted) {
  return did_you_mean(nearest_name(names, wanted));
}

}  // namespace base
