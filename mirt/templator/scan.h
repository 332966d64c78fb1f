// CTemplatorConcept::scan, for the files of the engine that scan texts.
#pragma once

#include <string_view>

#include "templator/delimiters.h"
#include "templator/templator_concept.h"

// Hands the visitor the text in its order: letters, delimiters that were escaped, and marks, for which it lends the
// place. An error is met where it stands, when all in front of it has been handed over.
template <class Visitor>
HRESULT CTemplatorConcept::scan(const Delimiters& d, Progress& progress, Visitor& visitor) {
  const std::wstring_view text = progress.text;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t literal_end = d.next_start(text, pos);
    if (literal_end > pos) RETURN_IF_FAILED(visitor.on_letters(text.substr(pos, literal_end - pos)));
    pos = literal_end;
    if (pos == text.size()) break;
    if (stands_at(text, pos, d.escape)) {
      RETURN_IF_FAILED(visitor.on_delimiter(take_escaped(text, pos, {&Escape, &MarkOpen, &MarkClose}).get()));
    } else if (stands_at(text, pos, d.mark_open)) {
      progress.mark = pos;
      pos += d.mark_open.size();
      auto [data, scratch] = visitor.fresh_mark();
      RETURN_IF_FAILED(read_mark(d, text, pos, data, scratch));
      pos += d.mark_close.size();
      RETURN_IF_FAILED(visitor.on_mark(text.substr(progress.mark, pos - progress.mark)));
      progress.mark = Progress::kNowhere;
    } else if (stands_at(text, pos, d.mark_close)) {
      progress.mark = pos;
      return invalid_mark_order();
    } else {
      RETURN_IF_FAILED(visitor.on_letters(text.substr(pos++, 1)));
    }
  }
  return S_OK;
}
