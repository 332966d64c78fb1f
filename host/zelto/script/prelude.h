// What every realm has besides the language: the helpers that older pages expect, written in the
// language itself.
#pragma once

#include <string_view>

namespace zelto::script {

// A function of (native, prototype): the helper object, and the prototype of automation objects. It
// answers three functions and an object: one that makes errors, of (kind, message) with the numbers of
// ErrorKind, one that makes an array of anything that can be stepped through, one that tells whether an object
// has a name that is not every object's, of (object, name), and the prototype that every object has.
extern const std::u16string_view kPrelude;

enum ErrorKind { kPlainError, kRangeError, kTypeError, kReferenceError };

}  // namespace zelto::script
