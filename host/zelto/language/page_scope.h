// What the script of a page must be like for it to run as one function, whose locals are all that the page declares.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "language/tokens.h"

namespace zelto::language {

// A function cannot be seen from code that is made of text while it runs, and what it has others run behind its back
// may outlive it: a page that may do either runs as a script, in a world of its own.
struct PageScope {
  bool can_be_function = false;
  bool is_strict = false;
  bool may_hide = false;  // what it does to the language's objects, from one who looks at what pages mostly do
  // Nothing in it leads to the global object, but where that is handed to an object: whether its names are properties
  // there cannot be told.
  bool may_share_world = false;
  // Some let, const or class at top level makes a name that is not a property of the global object.
  bool declares_lexical_names = true;
  // Among these are the names of let, const and class at top level, in the order of the text.
  std::vector<std::u16string> lexical_candidates;
};

// Of a token `this` that nothing is done with but to hand it to an object, `page.AddScript(this)` or `row.Script =
// this;` with the name of an object and a member that begins with a capital letter: where that name stands.
// Token::kNone for any other.
std::size_t taker_of_this(const TokenText& text, std::size_t i);

// Errs on the side of a world of its own.
PageScope page_scope(std::wstring_view text, const std::vector<Token>& tokens);

}  // namespace zelto::language
