#include "app/check/link_check.h"

#include <algorithm>
#include <optional>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "pages/page_scanner.h"
#include "pages/tag_attributes.h"
#include "text/charset.h"
#include "text/path_segments.h"
#include "text/percent_coding.h"

namespace zelto::check {

namespace {

constexpr std::size_t kLongestLink = 2048;  // of characters

struct Link {
  std::wstring_view text;
  std::size_t at;
};

bool is_blank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == L'\f'; }

// The value of the attribute whose name ends at `at`; nothing when it is not whole.
std::optional<Link> value_at(std::wstring_view text, std::size_t at) {
  at = pages::skip_blanks(text, at);
  if (at >= text.size() || text[at] != L'=') return std::nullopt;
  at = pages::skip_blanks(text, at + 1);
  if (at >= text.size()) return std::nullopt;
  const bool is_quoted = text[at] == L'"' || text[at] == L'\'';
  const std::wstring_view stops = !is_quoted ? L" \t\r\n>\"'" : text[at] == L'"' ? L"\"" : L"'";
  at += is_quoted;
  const std::wstring_view value = text.substr(at, kLongestLink);
  const std::size_t end = value.find_first_of(stops);
  if (end == std::wstring_view::npos) return std::nullopt;
  return Link{value.substr(0, end), at};
}

// The site's path that a link names, relative ones from its root on; empty for links that lead elsewhere, and where
// marks or script make a part of it.
std::string path_of(std::wstring_view link) {
  if (link.find(L"(#") != std::wstring_view::npos || link.find(L"<%") != std::wstring_view::npos) return {};
  const std::wstring_view path = link.substr(0, link.find_first_of(L"?#"));
  if (path.starts_with(L"//") || path.substr(0, path.find(L'/')).find(L':') != std::wstring_view::npos) return {};
  const std::string escaped = to_utf8(path);
  std::string plain = "/";
  for (std::size_t at = 0; at < escaped.size();) {
    const auto byte = escaped_byte(std::string_view(escaped).substr(at));
    plain += byte ? *byte : escaped[at];
    at += byte ? 3 : 1;
  }
  // Above the folder of the file there may be another one: its name does not matter here.
  std::string named;
  for (const std::string_view segment : path_segments(plain))
    if (segment != "." && segment != "..") named.append("/").append(segment);
  return named.empty() || !plain.ends_with('/') ? named : named + "/";
}

void check_text(const std::string& file, std::wstring_view text, std::size_t from, pages::LineCounter& lines,
                const ProtectedNames& protected_names, Findings& findings) {
  for (std::size_t at = text.find(L'='); at != std::wstring_view::npos; at = text.find(L'=', at + 1)) {
    std::size_t end = at;
    while (end > 0 && is_blank(text[end - 1])) --end;
    std::size_t begin = end;
    while (begin > 0 && base::is_letter(text[begin - 1]) && end - begin <= 6) --begin;
    const std::wstring_view name = text.substr(begin, end - begin);
    const bool is_link =
        base::equal_ascii(name, L"href") || base::equal_ascii(name, L"src") || base::equal_ascii(name, L"action");
    if (!is_link || begin == 0 || !is_blank(text[begin - 1])) continue;
    const auto link = value_at(text, end);
    if (!link) continue;
    const std::string path = path_of(link->text);
    const std::string_view hidden = protected_names.find_in(path);
    if (hidden.empty()) continue;
    lines.move_to(from + link->at);
    findings.warning({file, lines.line(), lines.column() + 1},
                     "This link leads to what is never served: '" + std::string(hidden) + "' is a protected name.");
  }
}

}  // namespace

void check_links(const std::string& file, std::wstring_view text, bool is_page, const ProtectedNames& protected_names,
                 Findings& findings) {
  pages::LineCounter lines(text);
  if (!is_page) return check_text(file, text, 0, lines, protected_names, findings);
  try {
    for (const pages::Piece& piece : pages::scan_page(text)) {
      if (piece.kind == pages::Piece::literal)
        check_text(file, piece.text, piece.offset, lines, protected_names, findings);
    }
  } catch (const pages::ScanFault&) {
    return;  // the compiler tells
  }
}

}  // namespace zelto::check
