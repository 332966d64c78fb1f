// A page's text cut into pieces: what is written as it is, what is run, what is read from elsewhere.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "pages/tag_attributes.h"

namespace zelto::pages {

struct Piece {
  enum Kind {
    literal,     // text that the page writes
    code,        // <% … %> and <script runat="server"> … </script>
    expression,  // <%= … %>
    directive,   // <%@ … %>, <% @ … %>
    include,     // <!-- #include file="…" --> or virtual="…"
    script,      // <script runat="server" src="…"></script>
  };
  Kind kind = literal;
  std::wstring_view text;   // of the page: what stands inside the delimiters; an include's or script's path
  std::size_t offset = 0;   // of `text` in the page
  bool is_virtual = false;  // the path begins at the site's root
  std::optional<Language> language = std::nullopt;  // of a <script runat="server"> that says
};

// What cannot be cut, and where.
struct ScanFault {
  std::string what;
  std::size_t offset;
};

// Pieces in order; they refer to `text`. Throws ScanFault.
std::vector<Piece> scan_page(std::wstring_view text);

// Finds the line (from 1) and column (from 0) of offsets that are asked for in rising order.
class LineCounter {
 public:
  explicit LineCounter(std::wstring_view text) : text_(text) {}
  void move_to(std::size_t offset);
  int line() const { return line_; }
  int column() const { return static_cast<int>(at_ - line_start_); }

 private:
  std::wstring_view text_;
  std::size_t at_ = 0;
  std::size_t line_start_ = 0;
  int line_ = 1;
};

}  // namespace zelto::pages
