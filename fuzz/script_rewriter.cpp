// Any text as a script: the rewriter only inserts words of its own between tokens, so every line stays, all that the
// author wrote is found where it was, and what was a script in brackets that close still is one.
#include "language/rewriter.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "language/lexemes.h"
#include "language/own_source.h"
#include "language/program.h"
#include "language/tokens.h"
#include "language/written_source.h"
#include "text/charset.h"
#include "text_input.h"

namespace {

using zelto::language::Rewritten;
using zelto::language::Token;
using zelto::language::Tokens;

std::wstring line_ends_of(std::wstring_view text) {
  std::wstring ends;
  for (const wchar_t c : text) {
    if (zelto::language::is_line_end(c)) ends += c;
  }
  return ends;
}

// Line and column from 1, in units, of a place in a text.
template <class Char>
std::pair<int, int> place_in(std::basic_string_view<Char> text, std::size_t at) {
  int line = 1;
  std::size_t start = 0;
  for (std::size_t i = 0; i < at; ++i) {
    if (!zelto::language::ends_line(text, i)) continue;
    ++line;
    start = i + 1;
  }
  return {line, static_cast<int>(at - start) + 1};
}

struct Change {
  std::size_t at;  // in the source
  std::size_t removed;
  std::wstring_view inserted;
};

struct Changes {
  std::vector<Change> all;
  std::vector<std::size_t> kept;  // of each character of the source its place in the result; kOpen where removed
};

// What was changed, told by the shifts alone; the rest of both texts must be the same.
Changes changes_of(std::wstring_view source, const Rewritten& rewritten) {
  const std::wstring_view text = rewritten.text;
  Changes changes;
  changes.kept.assign(source.size(), zelto::language::kOpen);
  std::size_t at = 0;
  std::size_t from = 0;
  int line = 1;
  std::size_t line_start = 0;
  auto shift = rewritten.shifts.begin();
  const auto is_here = [&] {
    return shift != rewritten.shifts.end() && shift->line == line &&
           static_cast<std::size_t>(shift->column) == at - line_start;
  };
  for (;;) {
    for (; is_here(); ++shift) {
      const auto inserted = static_cast<std::size_t>(shift->inserted);
      const auto removed = static_cast<std::size_t>(shift->removed);
      fuzz::require(at + inserted <= text.size() && from + removed <= source.size(), "changes lie in the texts");
      changes.all.push_back({from, removed, text.substr(at, inserted)});
      at += inserted;
      from += removed;
    }
    if (at >= text.size() || from >= source.size()) break;
    fuzz::require(text[at] == source[from], "the rest is as it was");
    changes.kept[from] = at;
    if (zelto::language::ends_line(text, at)) {
      ++line;
      line_start = at + 1;
    }
    ++at;
    ++from;
  }
  fuzz::require(at == text.size() && from == source.size(), "nothing is lost, nothing added");
  fuzz::require(shift == rewritten.shifts.end(), "each change has its place");
  return changes;
}

bool is_word_of_host(std::wstring_view text) {
  static constexpr std::array kWords{L"$zelto_value(",
                                     L", 1)",
                                     L")",
                                     L" $zelto.thrown =",
                                     L"$zelto_call(",
                                     L", ",
                                     L"\"",
                                     L"",
                                     L".v",
                                     L"$zelto_write(",
                                     L"$zelto_html_encode(",
                                     L"$zelto_url_encode(",
                                     L"$zelto_error(",
                                     L"$zelto.at(",
                                     L",",
                                     L"\\u2028\\",
                                     L"\\u2029\\"};
  if (text == zelto::language::kStatementPlace || text == zelto::language::kPatternPlace) return true;
  if (std::ranges::any_of(kWords, [text](std::wstring_view word) { return word == text; })) return true;
  return (text.starts_with(L" $zelto_caught(") && text.ends_with(L");")) ||
         (text.starts_with(L", \"") && text.ends_with(L'"'));
}

// Between tokens, or instead of one of the few that are replaced; inside a string at the two line ends alone.
void check_place(std::wstring_view source, const Tokens& tokens, const Change& change) {
  const auto next = std::ranges::upper_bound(tokens.all, change.at, {}, &Token::begin);
  fuzz::require(next != tokens.all.begin(), "nothing stands in front of the first token");
  const Token& token = *std::prev(next);
  if (change.inserted.starts_with(L'\\')) {
    fuzz::require(token.kind == Token::literal && change.at > token.begin && change.at < token.end, "in a string");
    fuzz::require(source[change.at] == 0x2028 || source[change.at] == 0x2029, "where the engine counts a line");
    return;
  }
  // The parts of templates end in the middle of `}…${`, where another token of no length stands.
  const bool is_border = std::ranges::any_of(
      tokens.all, [&](const Token& each) { return each.begin == change.at || each.end == change.at; });
  fuzz::require(is_border, "between tokens");
  if (change.removed == 0) return;
  const std::wstring_view word = source.substr(change.at, change.removed);
  fuzz::require(token.begin == change.at && token.end == change.at + change.removed, "a token");
  static constexpr std::array kReplaced{L"(", L".", L"new", L"Write", L"HTMLEncode", L"URLEncode"};
  const bool is_replaced = std::ranges::any_of(kReplaced, [word](std::wstring_view one) { return word == one; });
  fuzz::require(is_replaced, "one of those that are replaced");
}

void check_places(std::wstring_view source, const Changes& changes, const Rewritten& rewritten) {
  constexpr std::size_t kMost = 40;
  zelto::language::Program program;
  program.url = "page";
  set_text(program, rewritten);
  fuzz::require(own_source(program, program.text) == korlib::to_utf16(source), "functions show what was written");
  std::vector<std::size_t> kept;
  for (std::size_t at = 0; at < source.size(); ++at) {
    if (changes.kept[at] != zelto::language::kOpen && !zelto::language::is_line_end(source[at])) kept.push_back(at);
  }
  for (std::size_t i = 0; i < kept.size(); i += kept.size() / kMost + 1) {
    const std::size_t before = korlib::utf16_length(std::wstring_view(rewritten.text).substr(0, changes.kept[kept[i]]));
    const auto [line, column] = place_in(std::u16string_view(program.text), before);
    const zelto::language::SourcePlace place = source_place(program, line, column);
    fuzz::require(std::pair(place.line, place.column) == place_in(source, kept[i]), "errors name the author's place");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring source = zelto::to_wide({reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 8192)});
  const Rewritten rewritten = zelto::language::rewrite(source);
  fuzz::require(line_ends_of(rewritten.text) == line_ends_of(source), "every line stays");
  const auto tokens = zelto::language::tokenize(source);
  if (!tokens) {
    fuzz::require(rewritten.text == source && rewritten.shifts.empty(), "what is no script stays as it is");
    return 0;
  }
  const Changes changes = changes_of(source, rewritten);
  for (const Change& change : changes.all) {
    fuzz::require(is_word_of_host(change.inserted), "only words of the host");
    check_place(source, *tokens, change);
  }
  for (const std::size_t comment : rewritten.markup_comments) {
    fuzz::require(std::wstring_view(source).substr(comment).starts_with(L"<!--"), "comments that look like markup");
  }
  const auto again = zelto::language::tokenize(rewritten.text);
  fuzz::require(again.has_value(), "its brackets still close");
  check_places(source, changes, rewritten);
  fuzz::require(zelto::language::as_written(rewritten.text).size() <= rewritten.text.size() + 1,
                "no longer as written");
  return 0;
}
