// Any text as a script in VBScript: it is compiled into something with as many lines whose brackets close, or refused
// with a place inside of it.
#include <algorithm>
#include <string>

#include "language/tokens.h"
#include "text/charset.h"
#include "text_input.h"
#include "vbscript/compiler.h"
#include "vbscript/fragment.h"

namespace {

constexpr std::size_t kMost = 8192;

void check_place(std::wstring_view source, const zelto::vbscript::CompileError& error) {
  fuzz::require(!zelto::vbscript::words_of(error.fault).empty(), "an error has words");
  const auto breaks = std::ranges::count_if(source, [](wchar_t c) { return c == L'\n' || c == L'\r'; });
  fuzz::require(error.line >= 1 && error.line <= breaks + 1, "an error is in a line of the text");
  fuzz::require(error.column >= 0 && static_cast<std::size_t>(error.column) <= source.size(), "and in a column");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring source = zelto::to_wide({reinterpret_cast<const char*>(data), std::min(size, kMost)});
  try {
    const zelto::vbscript::Compiled compiled = zelto::vbscript::compile({.text = source});
    if (source.find(L'\r') == source.npos) {
      fuzz::require(std::ranges::count(compiled.text, L'\n') == std::ranges::count(source, L'\n'), "lines stay");
    }
    const std::wstring text = compiled.head + compiled.text;
    fuzz::require(zelto::language::tokenize(text).has_value(), "brackets close");
    zelto::vbscript::compile_fragment(source, zelto::vbscript::FragmentKind::execute, L"v\tx\tx.v\t\n",
                                      source.size() % 2 == 0);
  } catch (const zelto::vbscript::CompileError& error) {
    check_place(source, error);
  }
  return 0;
}
