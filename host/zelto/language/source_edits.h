// Changes to a script's text, collected in any order and made in one go.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "language/program.h"

namespace zelto::language {

struct EditedText {
  std::wstring text;
  std::vector<ColumnShift> shifts;  // in the order of the text
  std::wstring removed;             // what they removed, one after the other
};

// Positions count characters of the text that was given, from 0. No change holds a line end, so lines stay where
// they are.
class SourceEdits {
 public:
  explicit SourceEdits(std::wstring_view text) : text_(text) {}

  void insert(std::size_t at, std::wstring text) { edits_.push_back({at, 0, std::move(text)}); }
  void replace(std::size_t at, std::size_t length, std::wstring text) {
    edits_.push_back({at, length, std::move(text)});
  }
  // Inserts what opens a wrapping that closes at `end`: of several at one place the outermost comes first.
  void open_wrapping(std::size_t at, std::size_t end, std::wstring text) {
    edits_.push_back({at, 0, std::move(text), end});
  }

  EditedText apply();

 private:
  struct Edit {
    std::size_t at;
    std::size_t length;  // of the text that it replaces
    std::wstring text;
    std::size_t wraps_to = 0;  // of what opens a wrapping: where that closes
  };

  void copy(std::size_t from, std::size_t to);

  std::wstring_view text_;
  std::vector<Edit> edits_;
  EditedText result_;
  int line_ = 1;
  std::size_t line_start_ = 0;  // in the result
};

}  // namespace zelto::language
