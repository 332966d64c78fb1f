#include "script/world/function_text.h"

#include <optional>
#include <string>
#include <string_view>

#include "language/own_source.h"
#include "script/realm.h"
#include "script/text.h"
#include "script/world/function_links.h"

namespace zelto::script {
namespace {

bool is_of_host(std::u16string_view text) {
  return Prelude::source().find(text) != text.npos || FunctionLinks::source().find(text) != text.npos;
}

std::optional<std::u16string> own_text(Realm& realm, std::u16string_view text) {
  for (const auto& [name, program] : realm.reports().programs()) {
    if (auto source = language::own_source(*program, text)) return source;
  }
  return std::nullopt;
}

// In the engine's words.
std::u16string native_text(JSContextRef ctx, JSObjectRef function) {
  std::u16string name = to_utf16(text_of(ctx, property(ctx, function, "name")));
  for (const std::u16string_view word : {u"get ", u"set "}) {
    if (name.starts_with(word)) name.erase(0, word.size());
  }
  return u"function " + name + u"() {\n    [native code]\n}";
}

// The call of the engine's function is none that the page made.
void hide_call(JSContextRef ctx, JSValueRef exception) {
  if (!exception || !JSValueIsObject(ctx, exception)) return;
  JSValueRef stack = property(ctx, object_of(exception), "stack");
  if (!JSValueIsString(ctx, stack)) return;
  const JsString text(JSValueToStringCopy(ctx, stack, nullptr));
  const std::size_t end = text.view().find(u'\n');
  if (end != text.view().npos) {
    set_hidden(ctx, object_of(exception), "stack", JSValueMakeString(ctx, JsString(text.view().substr(end + 1)).get()));
  }
}

}  // namespace

JSValueRef function_text(JSContextRef ctx, JSObjectRef, JSObjectRef function, std::size_t, const JSValueRef*,
                         JSValueRef* exception) {
  Realm* const realm = Engine::realm_of(ctx);
  if (!realm) return JSValueMakeUndefined(ctx);
  JSValueRef value = realm->prelude().engine_text_of(function, exception);
  if (!value) {
    hide_call(ctx, *exception);
    return nullptr;
  }
  const JsString text(JSValueToStringCopy(ctx, value, exception));
  if (!text.get()) return nullptr;
  if (const auto source = own_text(*realm, text.view())) {
    return *source == text.view() ? value : JSValueMakeString(ctx, JsString(*source).get());
  }
  return is_of_host(text.view()) ? JSValueMakeString(ctx, JsString(native_text(ctx, function)).get()) : value;
}

}  // namespace zelto::script
