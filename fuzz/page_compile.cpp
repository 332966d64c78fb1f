// Any bytes as a page's file: what is wrong has words and a line of the page, and each line of the script is found
// where the page says that it comes from.
#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "language/lexemes.h"
#include "pages/page_compiler.h"
#include "pages/source_file.h"
#include "support/temporary_folder.h"
#include "text/charset.h"
#include "text_input.h"

namespace {

using zelto::language::Program;

// Cut where `ends(i)` says that a line ends after its i-th unit; without what ends them.
template <class Char, class Ends>
std::vector<std::basic_string_view<Char>> lines_of(std::basic_string_view<Char> text, Ends ends) {
  std::vector<std::basic_string_view<Char>> lines;
  std::size_t start = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!ends(at)) continue;
    const std::size_t end = at > start && text[at] == '\n' && text[at - 1] == '\r' ? at - 1 : at;
    lines.push_back(text.substr(start, end - start));
    start = at + 1;
  }
  lines.push_back(text.substr(start));
  return lines;
}

std::vector<std::wstring_view> lines_of_page(std::wstring_view text) {
  return lines_of(text, [text](std::size_t at) {
    return text[at] == L'\n' || (text[at] == L'\r' && !text.substr(at + 1).starts_with(L'\n'));
  });
}

std::vector<std::u16string_view> lines_of_script(std::u16string_view text) {
  return lines_of(text, [text](std::size_t at) { return zelto::language::ends_line(text, at); });
}

void check_lines(const Program& program, std::wstring_view page) {
  const std::vector<std::wstring_view> sources = lines_of_page(page);
  const std::vector<std::u16string_view> lines = lines_of_script(program.text);
  fuzz::require(lines.back().empty() && lines.size() == program.lines.size() + 1, "each line has a place");
  for (std::size_t i = 0; i < program.lines.size(); ++i) {
    const zelto::language::SourceLine& from = program.lines[i];
    fuzz::require(from.file < program.files.size(), "in a file");
    fuzz::require(from.line >= 1 && static_cast<std::size_t>(from.line) <= sources.size(), "that has that line");
    const std::wstring_view source = sources[static_cast<std::size_t>(from.line) - 1];
    fuzz::require(from.column >= 0 && static_cast<std::size_t>(from.column) <= source.size(), "and that column");
    const auto has_shift =
        std::ranges::any_of(program.shifts, [&](const auto& shift) { return shift.line == static_cast<int>(i) + 1; });
    if (from.is_generated || has_shift) continue;
    const std::u16string rest = korlib::to_utf16(source.substr(static_cast<std::size_t>(from.column)));
    fuzz::require(std::u16string_view(rest).starts_with(lines[i]), "where its text stands");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const test::TemporaryFolder site;
  const std::string root = site.path().string();
  const std::string file = site.write("page.asp", {reinterpret_cast<const char*>(data), size});
  const auto source = zelto::pages::read_source(file);
  fuzz::require(source && source->bytes.size() == size, "the file is read");
  const std::wstring page =
      zelto::pages::decode_source(source->bytes, zelto::pages::code_page_of_source(source->bytes));
  try {
    const zelto::pages::CompiledPage compiled = zelto::pages::compile_page(root, file);
    const Program& program = *compiled.program;
    fuzz::require(program.url == file && compiled.files.size() == 1, "a page of one file");
    check_lines(program, page);
    const zelto::pages::CompiledPage again = zelto::pages::compile_page(root, file);
    fuzz::require(again.program->text == program.text, "compiled twice it is the same");
  } catch (const zelto::pages::PageSourceError& error) {
    fuzz::require(!std::string_view(error.what()).empty() && error.file == file, "an error has words and the file");
    fuzz::require(error.line >= 1 && static_cast<std::size_t>(error.line) <= lines_of_page(page).size(), "and a line");
  }
  return 0;
}
