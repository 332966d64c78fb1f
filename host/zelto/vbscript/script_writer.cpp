#include "vbscript/script_writer.h"

#include <fmt/format.h>

#include <limits>

namespace zelto::vbscript {

void ScriptWriter::at(Place place) {
  for (; line_ < place.line; ++line_) {
    text_ += L'\n';
    line_start_ = text_.size();
  }
  if (line_ != place.line) return;
  const int column = static_cast<int>(text_.size() - line_start_);
  if (!marks_.empty() && marks_.back().line == line_ && marks_.back().column == column) marks_.pop_back();
  marks_.push_back({line_, column, place.column});
}

void ScriptWriter::put_string(std::wstring_view value) {
  text_ += L'"';
  for (const wchar_t c : value) {
    const bool is_plain =
        c >= 0x20 && c != L'"' && c != L'\\' && c != 0x2028 && c != 0x2029 && (c < 0xD800 || c > 0xDFFF);
    if (is_plain) {
      text_ += c;
    } else {
      for (const char digit : fmt::format("\\u{:04x}", static_cast<unsigned>(c))) text_ += static_cast<wchar_t>(digit);
    }
  }
  text_ += L'"';
}

// So that it is read as the same number.
void ScriptWriter::put_number(double value) {
  for (const char digit : fmt::format("{}", value)) text_ += static_cast<wchar_t>(digit);
}

// From each mark to the next one stands what belongs to the mark's column.
void ScriptWriter::add_shifts(std::size_t first, std::size_t last, Written& written) const {
  int source = 0;
  written.shifts.push_back({marks_[first].line, 0, marks_[first].column, marks_[first].source});
  for (std::size_t i = first; i < last; ++i) {
    source = marks_[i].source;
    const bool is_last = i + 1 == last;
    written.shifts.push_back({marks_[i].line, marks_[i].column,
                              is_last ? std::numeric_limits<int>::max() / 2 : marks_[i + 1].column - marks_[i].column,
                              is_last ? 0 : marks_[i + 1].source - source});
  }
}

ScriptWriter::Written ScriptWriter::finish(int line_count) && {
  Written written;
  for (; line_ < line_count; ++line_) text_ += L'\n';
  for (std::size_t first = 0; first < marks_.size();) {
    std::size_t last = first;
    while (last < marks_.size() && marks_[last].line == marks_[first].line) ++last;
    add_shifts(first, last, written);
    first = last;
  }
  written.text = std::move(text_);
  return written;
}

}  // namespace zelto::vbscript
