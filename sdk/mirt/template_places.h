// Where in its templates a member of the component failed.
//
// While a failure passes through the templates that were being drawn, the calling thread's error object
// (korlib/errorinfo.h) gathers their places beside its words: its help context is kTemplatePlaces, and its help file
// lists them, the innermost first, a line each:
//
//   /site/templates/row.html:3:7: (#;user|name#)
//
// File, line, column and the mark as it is written, its line ends as blanks and its end cut off where it is long;
// behind that, after a colon, why it fails, where the failure has no words: ": the templator has no Script". Line and
// column count from 1, the column in characters; the file is the path that the host was asked to read. A text that does
// not come from a file is called kTextTemplate. Of more than kMostTemplatePlaces, the last line says how many are not
// listed: "and 24 more". A failure without words has an error object without a description then, and whoever reports it
// finds words of his own for the code.
//
// A host whose scripts call each other through the component hands the list on with the failure of a function, as it
// came; the component adds to it. It needs GetErrorInfo to do so, and leaves the places away on a host without it.
#pragma once

#include <string_view>

#include <korlib/types.h>

namespace mirt {

inline constexpr DWORD kTemplatePlaces = 0x4D524B53;  // "MRKS", which is no page of a help file
inline constexpr std::wstring_view kTextTemplate = L"(text)";
inline constexpr std::size_t kMostTemplatePlaces = 16;  // of templates that draw each other more deeply, the innermost

}  // namespace mirt
