#include "app/check/page_check.h"

#include <utility>
#include <vector>

#include "app/check/page_script.h"
#include "pages/include_file.h"
#include "pages/page_scanner.h"
#include "pages/source_file.h"
#include "text/charset.h"

namespace zelto::check {

// The compiler stops at the first include that there is not; this finds all of them, in the files that they name too.
void PageCheck::check_includes(const std::string& page) {
  std::vector<std::string> waiting = {page};
  while (!waiting.empty()) {
    const std::string current = std::move(waiting.back());
    waiting.pop_back();
    if (!scanned_.insert(current).second) continue;
    const auto source = pages::read_source(current);
    if (!source) continue;
    const std::wstring text = pages::decode_source(source->bytes, pages::code_page_of_source(source->bytes));
    pages::LineCounter lines(text);
    try {
      for (const pages::Piece& piece : pages::scan_page(text)) {
        if (piece.kind != pages::Piece::include && piece.kind != pages::Piece::script) continue;
        lines.move_to(piece.offset);
        try {
          std::string found = pages::find_include(root_, current, piece).canonical;
          included_.insert(found);
          if (piece.kind == pages::Piece::include) waiting.push_back(std::move(found));
        } catch (const std::string& what) {
          findings_.error({current, lines.line(), lines.column() + 1}, what);
        }
      }
    } catch (const pages::ScanFault&) {
      continue;  // the compiler tells
    }
  }
}

void PageCheck::tell(const std::string& page, Place place, const std::string& text) {
  if (included_.contains(page)) {
    findings_.warning(std::move(place), "Asked for by itself, a page that others include fails: " + text);
  } else {
    findings_.error(std::move(place), text);
  }
}

std::optional<PageScript> PageCheck::check(const std::string& page) {
  try {
    PageScript script;
    script.page = pages::compile_present_files(root_, page, language_, script.written, script.lacks_includes);
    if (const auto error = syntax_.check(*script.page.program)) {
      tell(script.page.program->url, {error->file, error->line, error->column}, to_utf8(error->message));
    }
    return script;
  } catch (const pages::PageSourceError& error) {
    findings_.error({error.file, error.line, error.column}, error.what());
    return std::nullopt;
  }
}

}  // namespace zelto::check
