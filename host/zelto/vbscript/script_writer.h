// The text that a script becomes, and where each part of it comes from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "language/program.h"
#include "vbscript/tree.h"

namespace zelto::vbscript {

// What is written for a line of the source stands in the same line. Only at() goes to another one: nothing that may not
// be followed by a line's end is written in front of it.
class ScriptWriter {
 public:
  void at(Place place);
  void put(std::wstring_view text) { text_ += text; }
  void put_string(std::wstring_view value);  // as a literal
  void put_number(double value);

  const std::wstring& text() const { return text_; }

  // With empty lines up to that number of them.
  struct Written {
    std::wstring text;
    std::vector<language::ColumnShift> shifts;
  };
  Written finish(int line_count) &&;

 private:
  struct Mark {
    int line;    // from 1
    int column;  // of the text, from 0
    int source;  // the column there
  };

  void add_shifts(std::size_t first, std::size_t last, Written& written) const;

  std::wstring text_;
  std::size_t line_start_ = 0;
  int line_ = 1;
  std::vector<Mark> marks_;
};

}  // namespace zelto::vbscript
