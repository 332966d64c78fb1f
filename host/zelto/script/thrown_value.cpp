#include "script/thrown_value.h"

#include "script/engine.h"
#include "script/text.h"

namespace zelto::script {
namespace {

std::wstring name_in(JSContextRef context, JSObjectRef object) {
  JSValueRef name = property(context, object, "name");
  return JSValueIsString(context, name) ? message_of(context, name) : std::wstring();
}

// What the object says that it is; nothing where that is no more than "[object Map]".
std::wstring own_text(JSContextRef context, JSObjectRef object) {
  const JsString text(JSValueToStringCopy(context, object, nullptr));
  std::wstring own = text.get() ? beginning_of(text.get()) : std::wstring();
  return own.starts_with(L"[object ") ? std::wstring() : own;
}

// "{"code":5}", "Point {"x":1}", "/[a-z]/", "the function f"
std::wstring text_of_object(JSContextRef context, JSObjectRef object) {
  constexpr std::size_t kMost = 200;
  JSValueRef maker = property(context, object, "constructor");
  const std::wstring kind = JSValueIsObject(context, maker) ? name_in(context, object_of(maker)) : std::wstring();
  const bool is_of_language = !Engine::current()->classes().is_automation_object(context, object);
  if (is_of_language && JSObjectIsFunction(context, object)) {
    const std::wstring name = name_in(context, object);
    return name.empty() ? L"a function" : L"the function " + name;
  }
  const JsString json(JSValueCreateJSONString(context, object, 0, nullptr));
  std::wstring text = json.get() ? beginning_of(json.get()) : std::wstring();
  if (is_of_language && (text.empty() || text == L"{}")) {
    if (std::wstring own = own_text(context, object); !own.empty()) return own.substr(0, kMost);
  }
  if (text.empty()) text = L"an object";
  if (text.size() > kMost) text.replace(kMost, text.npos, L"…");
  const bool is_plain = !is_of_language || kind.empty() || kind == L"Object" || kind == L"Array";
  return is_plain ? text : kind + L" " + text;
}

std::wstring text_of_symbol(JSContextRef context, JSValueRef symbol) {
  JSObjectRef object = JSValueToObject(context, symbol, nullptr);
  JSValueRef description = object ? property(context, object, "description") : nullptr;
  const bool has_one = description && JSValueIsString(context, description);
  return L"Symbol(" + (has_one ? message_of(context, description) : std::wstring()) + L")";
}

std::wstring text_of_thrown(JSContextRef context, JSValueRef value) {
  if (JSValueIsSymbol(context, value)) return text_of_symbol(context, value);
  if (JSValueIsObject(context, value)) return text_of_object(context, object_of(value));
  const std::wstring text = message_of(context, value);
  return text.empty() ? L"an empty text" : text;
}

}  // namespace

bool is_error(JSContextRef context, JSValueRef value) {
  return JSValueIsObject(context, value) && JSValueIsString(context, property(context, object_of(value), "stack"));
}

std::wstring words_of_thrown(JSContextRef context, JSValueRef value, std::wstring_view beginning) {
  const std::wstring words(beginning);
  if (!is_error(context, value)) return words + text_of_thrown(context, value) + L".";
  const std::wstring name = name_in(context, object_of(value));
  return words + L"an error without a message" + (name.empty() ? L"" : L": " + name) + L".";
}

}  // namespace zelto::script
