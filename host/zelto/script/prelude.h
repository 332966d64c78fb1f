// What every realm has besides the language: the helpers that older pages expect, written in the
// language itself.
#pragma once

#include <string_view>

namespace zelto::script {

// A function of (native, prototype): the helper object, and the prototype of automation objects. It
// answers two functions: one that makes errors, of (kind, message) with the numbers of ErrorKind, and one
// that makes an array of anything that can be stepped through.
extern const std::u16string_view kPrelude;

enum ErrorKind { kPlainError, kRangeError, kTypeError, kReferenceError };

}  // namespace zelto::script
