#include "script/text.h"

#include <algorithm>
#include <array>

namespace zelto::script {
namespace {

bool has_surrogates(std::u16string_view text) {
  bool found = false;  // no early exit: the loop is vectorised
  for (const char16_t c : text) found |= (c & 0xF800) == 0xD800;
  return found;
}

}  // namespace

JsString::JsString(std::wstring_view text) {
  std::array<char16_t, 256> buffer;
  const std::size_t length = korlib::utf16_length(text);
  if (length <= buffer.size()) {
    korlib::fill_utf16(text, buffer.data());
    string_.reset(JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(buffer.data()), length));
  } else {
    *this = JsString(to_utf16(text));
  }
}

JsString::JsString(std::u16string_view text)
    : string_(JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()), text.size())) {}

std::u16string_view JsString::view_of(JSStringRef string) {
  return {reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(string)), JSStringGetLength(string)};
}

std::wstring to_wide(std::u16string_view text) {
  if (!has_surrogates(text)) return {text.begin(), text.end()};
  std::wstring out(korlib::utf32_length(text), L'\0');
  korlib::fill_utf32(text, out.data());
  return out;
}

JSValueRef evaluate(JSContextRef ctx, std::u16string_view source, JSValueRef* exception) {
  return JSEvaluateScript(ctx, JsString(source).get(), nullptr, nullptr, 1, exception);
}

JSValueRef property(JSContextRef ctx, JSObjectRef object, const JsString& name) {
  JSValueRef exception = nullptr;
  JSValueRef value = JSObjectGetProperty(ctx, object, name.get(), &exception);
  return value && !exception ? value : JSValueMakeUndefined(ctx);
}

void set_hidden(JSContextRef ctx, JSObjectRef object, const JsString& name, JSValueRef value) {
  JSObjectSetProperty(ctx, object, name.get(), value, kJSPropertyAttributeDontEnum, nullptr);
}

std::wstring text_of(JSContextRef ctx, JSValueRef value) {
  const JsString text(JSValueToStringCopy(ctx, value, nullptr));
  return text.get() ? to_wide(text.view()) : std::wstring();
}

JSValueRef to_string_value(JSContextRef ctx, JSValueRef value, JSValueRef* exception) {
  const JsString text(JSValueToStringCopy(ctx, value, exception));
  return text.get() ? JSValueMakeString(ctx, text.get()) : nullptr;
}

BSTR new_bstr(std::u16string_view text) {
  const bool plain = !has_surrogates(text);
  const std::size_t length = plain ? text.size() : korlib::utf32_length(text);
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return nullptr;
  BSTR out = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (!out) return nullptr;
  if (plain) {
    std::copy(text.begin(), text.end(), out);
  } else {
    korlib::fill_utf32(text, out);
  }
  return out;
}

}  // namespace zelto::script
