#include "script/thrown_value.h"

#include "script/text.h"

namespace zelto::script {
namespace {

std::wstring name_in(JSContextRef context, JSObjectRef object) {
  JSValueRef name = property(context, object, "name");
  return JSValueIsString(context, name) ? message_of(context, name) : std::wstring();
}

// "{"code":5}", "Point {"x":1}"
std::wstring text_of_object(JSContextRef context, JSObjectRef object) {
  constexpr std::size_t kMost = 200;
  const JsString json(JSValueCreateJSONString(context, object, 0, nullptr));
  std::wstring text = json.get() ? beginning_of(json.get()) : L"an object";
  if (text.size() > kMost) text.replace(kMost, text.npos, L"…");
  JSValueRef maker = property(context, object, "constructor");
  const std::wstring kind = JSValueIsObject(context, maker) ? name_in(context, object_of(maker)) : std::wstring();
  const bool is_plain = kind.empty() || kind == L"Object" || kind == L"Array";
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
