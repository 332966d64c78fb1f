#include "language/source_edits.h"

#include <algorithm>
#include <utility>

#include "language/lexemes.h"

namespace zelto::language {

EditedText SourceEdits::apply() {
  std::ranges::stable_sort(edits_, [](const Edit& a, const Edit& b) {
    if (a.at != b.at) return a.at < b.at;
    if (a.wraps_to == 0 || b.wraps_to == 0) return a.wraps_to == 0 && b.wraps_to != 0;
    return a.wraps_to > b.wraps_to;
  });
  std::size_t at = 0;
  for (const Edit& edit : edits_) {
    copy(at, edit.at);
    const auto column = static_cast<int>(result_.text.size() - line_start_);
    result_.shifts.push_back({line_, column, static_cast<int>(edit.text.size()), static_cast<int>(edit.length)});
    result_.text += edit.text;
    result_.removed += text_.substr(edit.at, edit.length);
    at = edit.at + edit.length;
  }
  copy(at, text_.size());
  return std::move(result_);
}

// Text that stays as it is, and in it the lines as the engine counts them.
void SourceEdits::copy(std::size_t from, std::size_t to) {
  const std::size_t begin = result_.text.size();
  result_.text.append(text_.substr(from, to - from));
  for (std::size_t at = from; at < to; ++at) {
    if (!ends_line(text_, at)) continue;
    ++line_;
    line_start_ = begin + (at - from) + 1;
  }
}

}  // namespace zelto::language
