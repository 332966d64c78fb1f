// Any text as a page: the pieces are all of it, in order, and each is found by itself as it is found among the others.
#include "pages/page_scanner.h"

#include <optional>
#include <vector>

#include "base/letter_case.h"
#include "pages/source_file.h"
#include "pages/tag_attributes.h"
#include "text/charset.h"
#include "text_input.h"

namespace {

using zelto::pages::Piece;

struct Scan {
  std::vector<Piece> pieces;
  std::optional<zelto::pages::ScanFault> fault;
};

Scan scan(std::wstring_view text) {
  try {
    return {zelto::pages::scan_page(text), std::nullopt};
  } catch (const zelto::pages::ScanFault& fault) {
    return {{}, fault};
  }
}

bool begins(std::wstring_view text, std::wstring_view word) {
  return base::equal_ascii(text.substr(0, word.size()), word);
}

// Where what begins at `from`, and holds the piece, ends; every delimiter is looked at on the way.
std::size_t end_of(std::wstring_view text, std::size_t from, const Piece& piece) {
  const std::size_t inside_end = piece.offset + piece.text.size();
  const std::wstring_view before = text.substr(from, piece.offset - from);
  const std::wstring_view behind = text.substr(inside_end);
  if (piece.kind == Piece::literal) {
    fuzz::require(before.empty() && !piece.text.empty(), "no text is lost, and none is empty");
    fuzz::require(piece.text.find(L"<%") == std::wstring_view::npos, "no code is written as text");
    return inside_end;
  }
  if (before.starts_with(L"<%")) {
    const std::wstring_view mark = before.substr(2);
    switch (piece.kind) {
      case Piece::code:
        fuzz::require(mark.empty() && !piece.text.starts_with(L'='), "code begins after its delimiter");
        break;
      case Piece::expression:
        fuzz::require(mark == L"=", "an expression begins after its equals sign");
        break;
      default:
        fuzz::require(piece.kind == Piece::directive && mark.ends_with(L'@'), "a directive begins after its sign");
        fuzz::require(mark.find_first_not_of(L" \t\r\n\f") == mark.size() - 1, "with blanks in front of it alone");
    }
    fuzz::require(behind.starts_with(L"%>") && piece.text.find(L"%>") == std::wstring_view::npos, "up to the first");
    return inside_end + 2;
  }
  if (before.starts_with(L"<!--")) {
    fuzz::require(piece.kind == Piece::include && !piece.text.empty(), "a comment is an include, of a name");
    const std::size_t close = behind.find(L"-->");
    fuzz::require(close != std::wstring_view::npos, "which ends");
    return inside_end + close + 3;
  }
  fuzz::require(begins(before, L"<script"), "anything else is a script");
  const auto tag = zelto::pages::read_tag(text, from + 7);
  fuzz::require(tag && base::equal_ascii(tag->value_of(L"runat"), L"server"), "for the server");
  const std::size_t close = piece.kind == Piece::code ? inside_end : text.find(L"</", tag->end);
  fuzz::require(piece.kind == Piece::code ? piece.offset == tag->end : tag->has(L"src"), "or the name of its file");
  fuzz::require(begins(text.substr(close), L"</script"), "up to its closing tag");
  const std::size_t end = text.find(L'>', close);
  return end == std::wstring_view::npos ? text.size() : end + 1;
}

void same(const Piece& expected, const Piece& found, std::size_t moved) {
  fuzz::require(expected.kind == found.kind && expected.is_virtual == found.is_virtual, "the same kind of piece");
  fuzz::require(expected.text == found.text && expected.offset == found.offset + moved, "of the same text");
}

// Whether text may hold a tag that ends elsewhere, or nowhere, when the text is cut: a quote may be closed after it.
bool has_tag(std::wstring_view text) {
  const std::wstring lowered = base::ascii_lowered(text);
  return lowered.find(L"<script") != std::wstring::npos || lowered.find(L"<object") != std::wstring::npos;
}

void check_pieces(std::wstring_view text, const std::vector<Piece>& pieces) {
  std::vector<std::size_t> ends{0};
  for (const Piece& piece : pieces) {
    const std::size_t from = ends.back();
    fuzz::require(piece.offset >= from && piece.offset + piece.text.size() <= text.size(), "pieces do not overlap");
    fuzz::require(piece.text == text.substr(piece.offset, piece.text.size()), "they are of the text");
    ends.push_back(end_of(text, from, piece));
  }
  fuzz::require(ends.back() == text.size(), "all of the text");

  // Cut between any two pieces, the text is cut into the same ones: here in the middle, and in front of the last one.
  for (const std::size_t cut : {pieces.size() / 2, pieces.size() - (pieces.empty() ? 0 : 1)}) {
    const Scan back = scan(text.substr(ends[cut]));
    fuzz::require(!back.fault && back.pieces.size() == pieces.size() - cut, "as many after");
    for (std::size_t i = cut; i < pieces.size(); ++i) same(pieces[i], back.pieces[i - cut], ends[cut]);
    if (has_tag(text.substr(0, ends[cut]))) continue;
    const Scan front = scan(text.substr(0, ends[cut]));
    fuzz::require(!front.fault && front.pieces.size() == cut, "as many in front");
    for (std::size_t i = 0; i < cut; ++i) same(pieces[i], front.pieces[i], 0);
  }
}

// A fault is where it is whatever stands in front of it, and there is none in front of it.
void check_fault(std::wstring_view text, const zelto::pages::ScanFault& fault) {
  fuzz::require(!fault.what.empty() && fault.offset < text.size(), "a fault has words and a place");
  fuzz::require(text[fault.offset] == L'<', "where something opens");
  const std::wstring_view front = text.substr(0, fault.offset);
  fuzz::require(has_tag(front) || !scan(front).fault, "the first one is told");
  const Scan alone = scan(text.substr(fault.offset));
  fuzz::require(alone.fault && alone.fault->offset == 0 && alone.fault->what == fault.what, "by itself it is the same");
}

// Tags that are read one after the other, from any places, are those that each is by itself.
void check_tags(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = zelto::to_wide({reinterpret_cast<const char*>(data), size});
  zelto::pages::ServerTags tags(text);
  for (std::size_t at = 0; at <= text.size(); at += 1 + size % 5) {
    const auto expected = zelto::pages::read_tag(text, at);
    const bool is_for_server = expected && base::equal_ascii(expected->value_of(L"runat"), L"server");
    const auto tag = tags.read(at);
    fuzz::require(tag.has_value() == is_for_server, "a tag is for the server or not");
    if (tag) fuzz::require(tag->end == expected->end && tag->all.size() == expected->all.size(), "the same tag");
  }
}

// Lines end with CR, LF or both.
void check_line(std::wstring_view text, std::size_t offset, const zelto::pages::LineCounter& counter) {
  int line = 1;
  std::size_t start = 0;
  for (std::size_t at = 0; at < offset; ++at) {
    const bool is_pair = text[at] == L'\r' && at + 1 < text.size() && text[at + 1] == L'\n';
    if ((text[at] != L'\n' && text[at] != L'\r') || is_pair) continue;
    ++line;
    start = at + 1;
  }
  fuzz::require(counter.line() == line && counter.column() == static_cast<int>(offset - start), "line and column");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_tags(data, size);
  const std::wstring text = zelto::pages::decode_source({reinterpret_cast<const char*>(data), size}, 65001);
  const Scan found = scan(text);
  if (found.fault) {
    check_fault(text, *found.fault);
    return 0;
  }
  check_pieces(text, found.pieces);
  zelto::pages::LineCounter counter(text);
  for (std::size_t i = 0; i < found.pieces.size(); ++i) {
    counter.move_to(found.pieces[i].offset);
    if (i % 4 == 0) check_line(text, found.pieces[i].offset, counter);
  }
  return 0;
}
