// The script of a page in its two languages, and the program that they make.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "language/program.h"
#include "pages/tag_attributes.h"
#include "vbscript/token.h"

namespace zelto::pages {

class PageText {
 public:
  struct Part {
    std::wstring text;
    std::vector<language::SourceLine> lines;
    std::vector<vbscript::PageMark> marks;  // of VBScript, in which nothing stands for these
  };

  Part& of(Language language) { return parts_[static_cast<std::size_t>(language)]; }
  std::size_t size() const { return parts_[0].text.size() + parts_[1].text.size(); }

  // A line of the page.
  void add_line(Language language, std::wstring_view line, language::SourceLine from);
  void add_html(Language language, std::size_t number, std::wstring_view text, language::SourceLine from);
  void begin_out(Language language, language::SourceLine from);
  // `behind`: what stands behind the expression and belongs to nothing.
  void end_out(Language language, std::wstring_view behind, language::SourceLine from);

  // Gives the program its text and lines; `language` is that of the page, whose files it has. Throws PageSourceError.
  void finish(Language language, language::Program& program);

 private:
  static void add_further_lines(Part& part, std::wstring_view line, language::SourceLine from);
  void add_generated(Language language, std::wstring_view script, vbscript::PageMark mark, language::SourceLine from);

  std::array<Part, 2> parts_;
};

}  // namespace zelto::pages
