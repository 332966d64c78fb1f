#include "app/check/page_script.h"

#include "language/lexemes.h"

namespace zelto::check {

Place WrittenPlaces::at(std::size_t offset) {
  const std::wstring_view text = script_.written;
  for (; at_ < offset && at_ < text.size(); ++at_) {
    if (!language::ends_line(text, at_)) continue;
    ++line_;
    line_start_ = at_ + 1;
  }
  const language::Program& program = *script_.page.program;
  if (line_ >= program.lines.size()) return {program.url};
  const language::SourceLine& from = program.lines[line_];
  const int own = from.is_generated ? 0 : static_cast<int>(at_ - line_start_);
  return {program.files[from.file], from.line, from.column + own + 1};
}

}  // namespace zelto::check
