// Text between the engine (UTF-16) and the objects (UTF-32).
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include <korlib/bstr.h>
#include <korlib_host/unicode.h>

#include "script/jsc.h"

namespace zelto::script {

// An owned engine string.
class JsString {
 public:
  JsString() = default;
  explicit JsString(JSStringRef owned) : string_(owned) {}
  explicit JsString(std::wstring_view text);
  explicit JsString(std::u16string_view text);
  JsString(const char* utf8) : string_(JSStringCreateWithUTF8CString(utf8)) {}

  JSStringRef get() const noexcept { return string_.get(); }
  JsString shared() const { return JsString(JSStringRetain(get())); }
  std::u16string_view view() const { return view_of(get()); }
  static std::u16string_view view_of(JSStringRef string);

 private:
  struct Release {
    void operator()(JSStringRef string) const { JSStringRelease(string); }
  };
  std::unique_ptr<OpaqueJSString, Release> string_;
};

// The characters of an engine string, which outlives it. Asking the engine for them makes a copy of 16-bit characters
// for most strings; of a short one, which mostly is all ASCII, they are copied into this object.
class ShortText {
 public:
  explicit ShortText(JSStringRef string);
  ShortText(const ShortText&) = delete;
  ShortText& operator=(const ShortText&) = delete;
  std::u16string_view view() const noexcept { return view_; }

 private:
  std::array<char16_t, 64> copy_;
  std::u16string_view view_;
};

using korlib::to_utf16;
using korlib::to_utf8;
std::wstring to_wide(std::u16string_view text);  // lone surrogates become U+FFFD
BSTR new_bstr(JSStringRef text);                 // null when memory is short

// Of a value that is known to be an object.
inline JSObjectRef object_of(JSValueRef value) { return const_cast<JSObjectRef>(value); }
inline JSValueRef string_value(JSContextRef ctx, std::wstring_view text) {
  return JSValueMakeString(ctx, JsString(text).get());
}
// Runs a piece of script. Null when it fails, with the exception where that is wanted.
JSValueRef evaluate(JSContextRef ctx, std::u16string_view source, JSValueRef* exception = nullptr);
// Undefined when there is none or it cannot be read.
JSValueRef property(JSContextRef ctx, JSObjectRef object, const JsString& name);
// A property that for-in passes over.
void set_hidden(JSContextRef ctx, JSObjectRef object, const JsString& name, JSValueRef value);
// Of one that a script cannot change either.
inline constexpr JSPropertyAttributes kFixed =
    kJSPropertyAttributeDontEnum | kJSPropertyAttributeReadOnly | kJSPropertyAttributeDontDelete;
// What String(value) is; empty when that fails.
std::wstring text_of(JSContextRef ctx, JSValueRef value);
// Of a longer one the beginning, with an ellipsis: for messages, which may be as long as a page likes. To give out all
// of a text, the engine makes a copy, and ends the process where there is no memory for it.
std::wstring message_of(JSContextRef ctx, JSValueRef value);
std::wstring beginning_of(JSStringRef text);
// The same as a value of the script; null with an exception when that fails.
JSValueRef to_string_value(JSContextRef ctx, JSValueRef value, JSValueRef* exception);

}  // namespace zelto::script
