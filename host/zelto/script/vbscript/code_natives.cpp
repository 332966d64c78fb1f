// Code that a page makes of text.
#include <korlib_host/unicode.h>

#include "script/callback.h"
#include "script/realm.h"
#include "script/vbscript/natives.h"
#include "vbscript/compile_error.h"
#include "vbscript/fragment.h"

namespace zelto::script::vbscript {
namespace {

// compile(text, kind, names, counts): what eval takes, or the number of what is wrong with the text.
JSValueRef compile(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values,
                   JSValueRef*) {
  if (count < 4) return JSValueMakeUndefined(ctx);
  const auto kind = static_cast<zelto::vbscript::FragmentKind>(JSValueToNumber(ctx, values[1], nullptr));
  try {
    const bool counts = JSValueToBoolean(ctx, values[3]);
    return string_value(
        ctx, zelto::vbscript::compile_fragment(text_of(ctx, values[0]), kind, text_of(ctx, values[2]), counts));
  } catch (const zelto::vbscript::CompileError& error) {
    return JSValueMakeNumber(ctx, static_cast<int>(error.fault));
  }
}

// words(number): of such an error.
JSValueRef words(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values, JSValueRef*) {
  if (count < 1) return JSValueMakeUndefined(ctx);
  const auto fault = static_cast<zelto::vbscript::Fault>(JSValueToNumber(ctx, values[0], nullptr));
  return string_value(ctx, zelto::vbscript::words_of(fault));
}

}  // namespace

void add_code_natives(JSContextRef context, JSObjectRef target) {
  add_native(context, target, {"compile", callback<compile>});
  add_native(context, target, {"compile_words", callback<words>});
}

}  // namespace zelto::script::vbscript
