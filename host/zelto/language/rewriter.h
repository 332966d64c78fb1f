// What a page may write that the engine's language does not have, put into words that it does have.
//
//   Session("x") = v          $zelto.at(Session, "x").v = v    also with +=, ++ and the like
//   rs.Close;                 $zelto_value(rs.Close, 1);       a method, called without parentheses
//   t = stream.ReadText;      t = $zelto_value(stream.ReadText);   likewise after `return`, as an
//                             argument of a call and as the condition of if, while and switch
//   if (!list.Item)           if (!$zelto_value(list.Item))    Item without an index, anywhere
//   rs.EOF()                  $zelto_call(rs, "EOF", "rs")     a method is called, a property read; for names that
//                             begin with a capital letter, and for the properties of classic objects in any
//                             letter case
//   Response.Write(x)         $zelto_write(Response,x)         in the language, as far as that can; so are Server's
//                             HTMLEncode and URLEncode, in exactly that spelling
//   page.SetView(a, b)        $zelto_of(page,"SetView","page").SetView(a, b)   the object itself, or what has its
//                             methods at hand; for a plain name and a member that begins with a capital letter
//   page.AddScript(this)      …AddScript($zelto_given(this,page))    so that it is seen whether an object gets it
//   new Error(5, "text")      $zelto_error(Error,5, "text")    with its number
//   throw x;                  throw $zelto.thrown = x;         remembers where something was thrown
//   while (x) …               if($zelto_never);else while (x) …   so that a time-out in it finds the line
//   var [a, b] = x            var [a, b] = $zelto_never?0:x    so that what cannot be taken apart does; likewise
//                             behind the dots of `[...x]` and `f(...x)`, and with the former words where a constant
//                             is set
//   catch (e) {               catch (e) { $zelto_caught(e);   gives it the number that older pages know
//
// $zelto_value calls a method of an automation object, if it needs no arguments, and passes everything
// else through. Elsewhere such a method stands for itself, and gives its value where one is needed: as
// text, as a number, as an argument of an automation call. $zelto.at throws the usual ReferenceError for
// what is not an automation object. Only insertions within a line are made, so lines keep their numbers.
//
// Different sources never become the same text, unless they have words of this file themselves: so what a function
// was made of can be told from its text (own_source.h).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "language/program.h"
#include "language/source_edits.h"

namespace zelto::language {

struct Rewritten : EditedText {
  PageScope scope;
  std::vector<std::size_t> markup_comments;  // where "<!--" begins a comment in the text that was given
};

// Text that cannot be cut into tokens comes back as it was, for the engine to complain about.
Rewritten rewrite(std::wstring_view text);
// Makes it the program's text.
void set_text(Program& program, Rewritten rewritten);

}  // namespace zelto::language
