#include "script/world/globals.h"

#include <algorithm>
#include <string>

#include "base/letter_case.h"
#include "language/lexemes.h"
#include "script/text.h"

namespace zelto::script {

void Globals::set_object(std::wstring_view name, IDispatch* object, bool is_new) {
  if (is_new || !object) {
    JSValueRef value = object ? static_cast<JSValueRef>(wrappers_.wrap(object)) : JSValueMakeNull(context_);
    set_hidden(context_, object_, JsString(name), value);
  }
  if (name == L"Server") server_ = object;
}

void Globals::log(std::wstring_view level, std::wstring_view text) const {
  if (!log_) return;
  const language::SourcePlace here = reports_.here();
  log_({to_utf8(level), to_utf8(text), here.file, here.line});
}

void Globals::spell(JsString& name) const {
  if (!folded_names_) return;
  const std::u16string folded = to_utf16(base::folded(to_wide(name.view())));
  const auto found = std::ranges::lower_bound(*folded_names_, folded, {}, &language::FoldedName::folded);
  if (found != folded_names_->end() && found->folded == folded) name = JsString(std::u16string_view(found->name));
}

bool Globals::declares(const JsString& name, bool* is_lexical) const {
  *is_lexical = false;
  if (const unsigned* known = page_ ? page_->find(name.view()) : nullptr) {
    JSValueRef exception = nullptr;
    *is_lexical = page_->read(*known, &exception) && !exception;
    return *is_lexical;
  }
  if (JSObjectHasProperty(context_, object_, name.get()) && is_enumerable(name)) return true;
  if (!has_lexical_ || page_) return false;
  JSValueRef exception = nullptr;
  *is_lexical = lexical_value(name, &exception) && !exception;
  return *is_lexical;
}

// The engine's own globals, and the host's objects, are not enumerable; what a script declares is.
bool Globals::is_enumerable(const JsString& name) const {
  JSValueRef function = property(context_, prelude_.object_prototype(), "propertyIsEnumerable");
  if (!JSValueIsObject(context_, function)) return false;
  JSValueRef argument = JSValueMakeString(context_, name.get());
  JSValueRef answer = JSObjectCallAsFunction(context_, object_of(function), object_, 1, &argument, nullptr);
  return answer && JSValueToBoolean(context_, answer);
}

// `typeof` a name tells a declared one from a global of the engine only by where it lives, so the
// question is asked of a name that the global object does not have. Clients' field names are looked up as well: only
// what can stand as a name in source text is put there.
JSValueRef Globals::lexical_value(const JsString& name, JSValueRef* exception) const {
  if (page_) {
    const unsigned* const known = page_->find(name.view());
    return known ? page_->read(*known, exception) : nullptr;
  }
  const bool is_name = language::is_plain_name(to_wide(name.view()));
  if (!is_name || JSObjectHasProperty(context_, object_, name.get())) return nullptr;
  return JSEvaluateScript(context_, name.get(), nullptr, nullptr, 1, exception);
}

void Globals::set_lexical_value(const JsString& name, JSValueRef value, JSValueRef* exception) const {
  if (page_) {
    if (const unsigned* known = page_->find(name.view())) page_->write(*known, value, exception);
    return;
  }
  const std::u16string source = u"(function(value) { " + std::u16string(name.view()) + u" = value })";
  JSValueRef setter = evaluate(context_, source, exception);
  if (setter) JSObjectCallAsFunction(context_, object_of(setter), nullptr, 1, &value, exception);
}

}  // namespace zelto::script
