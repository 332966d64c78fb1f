#include "language/program.h"

#include <korlib_host/unicode.h>

#include <algorithm>

#include "language/lexemes.h"
#include "language/rewriter.h"

namespace zelto::language {
namespace {

// The engine counts units of UTF-16 from 1: in characters from 0.
int to_characters(std::u16string_view text, int line, int column) {
  std::size_t start = 0;
  for (std::size_t at = 0; line > 1 && at < text.size(); ++at) {
    if (!ends_line(text, at)) continue;
    --line;
    start = at + 1;
  }
  const std::u16string_view before = text.substr(start, static_cast<std::size_t>(column) - 1);
  return static_cast<int>(korlib::utf32_length(before));
}

// Without what stands only in the script. A place within that is the place in front of it.
int without_shifts(const std::vector<ColumnShift>& shifts, int line, int column) {
  int result = column;
  for (auto shift = std::ranges::lower_bound(shifts, line, {}, &ColumnShift::line);
       shift != shifts.end() && shift->line == line && shift->column <= column; ++shift) {
    result -= std::min(shift->inserted, column - shift->column);
    if (column >= shift->column + shift->inserted) result += shift->removed;
  }
  return result;
}

}  // namespace

void set_head(std::vector<ColumnShift>& shifts, int length) {
  for (ColumnShift& shift : shifts) {
    if (shift.line > 1) break;
    shift.column += length;
  }
  shifts.insert(shifts.begin(), {1, 0, length, 0});
}

SourcePlace source_place(const Program& program, int line, int column) {
  const int own = column > 0 ? without_shifts(program.shifts, line, to_characters(program.text, line, column)) : -1;
  if (line < 1 || static_cast<std::size_t>(line) > program.lines.size()) return {program.url, line, own + 1};
  const SourceLine& from = program.lines[static_cast<std::size_t>(line) - 1];
  SourcePlace place{from.file < program.files.size() ? program.files[from.file] : program.url, from.line, 0};
  if (from.is_generated) {
    place.column = from.column + 1;
  } else if (column > 0) {
    place.column = from.column + own + 1;
  }
  return place;
}

std::shared_ptr<const Program> compile(std::wstring_view text, std::string url) {
  auto program = std::make_shared<Program>();
  program->url = std::move(url);
  set_text(*program, rewrite(text));
  return program;
}

}  // namespace zelto::language
