// What the text of a script consists of.
#pragma once

#include <string>
#include <vector>

#include "vbscript/words.h"

namespace zelto::vbscript {

// The subtype that a number's text has.
enum class NumberKind : unsigned char { integer, long_, double_ };

struct Token {
  enum Kind : unsigned char {
    name,  // also each word
    number,
    string,
    date,
    symbol,    // `text` is one of the operators or of ( ) , . :
    line_end,  // of a statement; also what lies between pieces of a page
    html,      // text of the page, `value` in its list; with a `text` where it holds more than blanks
    out,       // <%= of a page
    out_end,
    end,  // of the script
  };
  Kind kind = end;
  Word word = Word::none;  // of a name that is not in brackets
  bool has_blank_before = false;
  NumberKind number_kind = NumberKind::integer;
  int line = 1;       // from 1
  int column = 0;     // in characters from 0
  double value = 0;   // of a number or date
  std::wstring text;  // of a name or symbol; what a string holds

  bool is(Word what) const { return kind == name && word == what; }
  bool is(std::wstring_view what) const { return kind == symbol && text == what; }
};

// What stands between the pieces of a page's script: a line of the text that is empty, and means this.
struct PageMark {
  int line = 0;  // from 1
  enum Kind : unsigned char { boundary, html, out, out_end } kind = boundary;
  std::size_t number = 0;  // of the page text
  bool is_blank = false;   // that text has nothing but blanks and line ends
};

}  // namespace zelto::vbscript
