#include "script/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace zelto::script {
namespace {

// Text is gone through in blocks of a fixed size, of which the compiler makes vectors.
constexpr std::size_t kBlock = 16;

constexpr std::uint16_t surrogate_bit(char16_t c) { return static_cast<std::uint16_t>((c & 0xF800) == 0xD800); }

bool has_surrogates(std::u16string_view text) {
  std::uint16_t found = 0;
  while (text.size() >= kBlock) {
    for (std::size_t i = 0; i < kBlock; ++i) found |= surrogate_bit(text[i]);
    text.remove_prefix(kBlock);
  }
  for (const char16_t c : text) found |= surrogate_bit(c);
  return found != 0;
}

// For text without surrogates.
void widen(std::u16string_view text, wchar_t* out) {
  while (text.size() >= kBlock) {
    for (std::size_t i = 0; i < kBlock; ++i) out[i] = text[i];
    out += kBlock;
    text.remove_prefix(kBlock);
  }
  std::ranges::copy(text, out);
}

// What is short goes through a buffer of so many characters.
constexpr std::size_t kShort = 256;

// Bytes for so many units of UTF-16 and a NUL.
constexpr std::size_t bytes_for(std::size_t units) { return 3 * units + 1; }

// The text, in the buffer, where there is room for it whatever it is, and it is all ASCII; else nothing. With less room
// the engine would stop early, after as many bytes perhaps as there are characters.
std::string_view short_ascii(JSStringRef string, std::span<char> buffer) {
  const std::size_t length = JSStringGetLength(string);
  if (bytes_for(length) > buffer.size()) return {};
  const bool is_ascii = JSStringGetUTF8CString(string, buffer.data(), buffer.size()) == length + 1;
  return is_ascii ? std::string_view(buffer.data(), length) : std::string_view();
}

// The same the other way; false where the text is no such text, or has a NUL.
bool fill_ascii(std::wstring_view text, std::span<char> buffer) {
  if (text.size() >= buffer.size()) return false;
  wchar_t all = 0;
  bool has_nul = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    all |= text[i];
    has_nul |= text[i] == 0;
    buffer[i] = static_cast<char>(text[i]);
  }
  buffer[text.size()] = '\0';
  return static_cast<std::uint32_t>(all) < 0x80 && !has_nul;
}

BSTR new_bstr(std::u16string_view text) {
  const bool plain = !has_surrogates(text);
  const std::size_t length = plain ? text.size() : korlib::utf32_length(text);
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return nullptr;
  BSTR out = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (!out) return nullptr;
  if (plain) {
    widen(text, out);
  } else {
    korlib::fill_utf32(text, out);
  }
  return out;
}

}  // namespace

// The engine keeps ASCII in half the space when it is made of bytes.
JsString::JsString(std::wstring_view text) {
  std::array<char, kShort> bytes;
  if (fill_ascii(text, bytes)) {
    string_.reset(JSStringCreateWithUTF8CString(bytes.data()));
    return;
  }
  std::array<char16_t, kShort> buffer;
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

ShortText::ShortText(JSStringRef string) {
  std::array<char, bytes_for(std::tuple_size_v<decltype(copy_)>)> bytes;
  const std::string_view ascii = short_ascii(string, bytes);
  std::ranges::copy(ascii, copy_.begin());
  view_ = ascii.empty() ? JsString::view_of(string) : std::u16string_view(copy_.data(), ascii.size());
}

std::wstring to_wide(std::u16string_view text) {
  if (!has_surrogates(text)) return {text.begin(), text.end()};
  std::wstring out(korlib::utf32_length(text), L'\0');
  korlib::fill_utf32(text, out.data());
  return out;
}

// The engine converts to UTF-8 a character at a time; beyond a few, the copy of 16-bit characters that it makes
// otherwise takes less.
BSTR new_bstr(JSStringRef text) {
  constexpr std::size_t kFew = 16;
  std::array<char, bytes_for(kFew)> bytes;
  const std::string_view ascii = short_ascii(text, bytes);
  if (ascii.empty()) return new_bstr(JsString::view_of(text));
  BSTR out = SysAllocStringLen(nullptr, static_cast<UINT>(ascii.size()));
  if (out) std::ranges::copy(ascii, out);
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

std::wstring message_of(JSContextRef ctx, JSValueRef value) {
  const JsString text(JSValueToStringCopy(ctx, value, nullptr));
  return text.get() ? beginning_of(text.get()) : std::wstring();
}

std::wstring beginning_of(JSStringRef text) {
  constexpr std::size_t kMost = std::size_t{16} << 10;  // units of UTF-16, and bytes of UTF-8
  if (JSStringGetLength(text) <= kMost) return to_wide(JsString::view_of(text));
  std::string beginning(kMost, '\0');
  const std::size_t length = JSStringGetUTF8CString(text, beginning.data(), beginning.size());
  beginning.resize(length > 0 ? length - 1 : 0);
  return korlib::to_wide(beginning) + L"…";
}

JSValueRef to_string_value(JSContextRef ctx, JSValueRef value, JSValueRef* exception) {
  const JsString text(JSValueToStringCopy(ctx, value, exception));
  return text.get() ? JSValueMakeString(ctx, text.get()) : nullptr;
}

}  // namespace zelto::script
