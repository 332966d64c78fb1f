// What a script has thrown that says nothing itself, in words.
#pragma once

#include <string>
#include <string_view>

#include "script/jsc.h"

namespace zelto::script {

inline constexpr std::wstring_view kThrown = L"The script threw ";
inline constexpr std::wstring_view kRejected = L"A promise was rejected, and nothing handles that: ";

// Whether it is one of the language's errors, which know where they were made.
bool is_error(JSContextRef context, JSValueRef value);
// "The script threw {"code":5}.", after that beginning.
std::wstring words_of_thrown(JSContextRef context, JSValueRef value, std::wstring_view beginning = kThrown);

}  // namespace zelto::script
