// The marks of a template, as the page controller reads them: (#TYPEname|parameter#|#parameter#).
//
// Needs nothing of the host, so that a test can compare it with the component.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zelto::check {

// What a mark's name is the name of.
enum class MarkNames {
  nothing,        // the mark has no type: it shows nothing
  draw_function,  // of the script, behind a prefix
  variable,       // of the script, or a function
  value,          // which is known when the page runs
  template_file,
};

// By the type character.
MarkNames names_of(wchar_t type);

struct Mark {
  wchar_t type = 0;        // 0 where the first character is no type
  std::wstring name;       // as it is written
  std::size_t begin = 0;   // of "(#"
  std::size_t depth = 0;   // marks around it
  bool is_literal = true;  // the name has neither marks nor protected delimiters in it
  bool is_certain = true;  // nothing around it is protected, which may make other marks of the text
};

struct MarkFault {
  std::size_t at;
  std::string what;
};

struct ScannedMarks {
  std::vector<Mark> marks;  // in the order of their ends, those in parameters of others too
  std::vector<MarkFault> faults;
};

ScannedMarks scan_marks(std::wstring_view text);

}  // namespace zelto::check
