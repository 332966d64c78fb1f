#include "language/written_source.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zelto::language {
namespace {

constexpr std::size_t kNone = std::wstring::npos;

// A longer message is hardly the engine's, which quotes an expression at most: a page may have put into it what a
// client sent. Each piece that is unwrapped moves all after it.
constexpr std::size_t kLongest = 16384;

// The engine takes the last expression in front for the one that fails where it knows of no other.
constexpr std::wstring_view kOfPlace = L" (evaluating '$zelto_never')";

// What stands between the parenthesis that ends before `begin` and its partner: its end.
std::size_t end_of_inside(std::wstring_view text, std::size_t begin) {
  int depth = 1;
  for (std::size_t at = begin; at < text.size(); ++at) {
    if (text[at] == L'(') ++depth;
    if (text[at] == L')' && --depth == 0) return at;
  }
  return kNone;
}

// object, "Name", or object, "Name", "object"
std::wstring call(std::wstring_view inside) {
  inside = inside.substr(0, inside.find_last_not_of(L", ") + 1);
  if (inside.ends_with(L'"') && std::ranges::count(inside, L'"') >= 4) {
    const std::size_t last = inside.rfind(L", \"");
    const std::wstring_view receiver = inside.substr(last + 3, inside.size() - last - 4);
    if (inside.starts_with(receiver)) inside = inside.substr(0, last);
  }
  const std::size_t comma = inside.rfind(L',');
  const std::size_t open = inside.find(L'"', comma);
  const std::size_t close = inside.rfind(L'"');
  if (comma == kNone || open == kNone || close <= open) return std::wstring(inside);
  const std::size_t end = inside.find_last_not_of(L' ', comma - 1);
  return std::wstring(inside.substr(0, end + 1)) + L"." + std::wstring(inside.substr(open + 1, close - open - 1)) +
         L"()";
}

// member, or member, 1
std::wstring value(std::wstring_view inside) {
  if (inside.ends_with(L", 1")) inside.remove_suffix(3);
  return std::wstring(inside);
}

// object,"Name","object", where the object is a name, or this,object
std::wstring owner(std::wstring_view inside) { return std::wstring(inside.substr(0, inside.find(L','))); }

// Error,number, text
std::wstring error(std::wstring_view inside) {
  const std::size_t comma = inside.find(L',');
  if (comma == kNone) return std::wstring(inside);
  return L"new Error(" + std::wstring(inside.substr(comma + 1)) + L")";
}

// object,arguments
template <const wchar_t* member>
std::wstring method(std::wstring_view inside) {
  const std::size_t comma = inside.find(L',');
  if (comma == kNone) return std::wstring(inside);
  return std::wstring(inside.substr(0, comma)) + member + L"(" + std::wstring(inside.substr(comma + 1)) + L")";
}
constexpr wchar_t kWrite[] = L".Write";
constexpr wchar_t kHtmlEncode[] = L".HTMLEncode";
constexpr wchar_t kUrlEncode[] = L".URLEncode";

// callee,arguments
std::wstring reference(std::wstring_view inside) {
  int depth = 0;
  for (std::size_t at = 0; at < inside.size(); ++at) {
    if (inside[at] == L'(' || inside[at] == L'[') ++depth;
    if (inside[at] == L')' || inside[at] == L']') --depth;
    if (inside[at] != L',' || depth > 0) continue;
    return std::wstring(inside.substr(0, at)) + L"(" + std::wstring(inside.substr(at + 1)) + L")";
  }
  return std::wstring(inside);
}

struct Wrapping {
  std::wstring_view opening;
  std::wstring_view tail;  // after the closing parenthesis
  std::wstring (*as_written)(std::wstring_view inside);
};
constexpr std::array kWrappings{
    Wrapping{L"$zelto_of(", L"", owner},
    Wrapping{L"$zelto_given(", L"", owner},
    Wrapping{L"$zelto_call(", L"", call},
    Wrapping{L"$zelto_value(", L"", value},
    Wrapping{L"$zelto_error(", L"", error},
    Wrapping{L"$zelto_write(", L"", method<kWrite>},
    Wrapping{L"$zelto_html_encode(", L"", method<kHtmlEncode>},
    Wrapping{L"$zelto_url_encode(", L"", method<kUrlEncode>},
    Wrapping{L"$zelto.at(", L".v", reference},
};

// False where the message cut it short.
bool unwrap(std::wstring& text, const Wrapping& wrapping) {
  const std::size_t begin = text.rfind(wrapping.opening);  // the innermost
  if (begin == kNone) return false;
  const std::size_t inside = begin + wrapping.opening.size();
  const std::size_t end = end_of_inside(text, inside);
  if (end == kNone) return false;
  std::size_t length = end + 1 - begin;
  if (text.compare(end + 1, wrapping.tail.size(), wrapping.tail) == 0) length += wrapping.tail.size();
  text.replace(begin, length, wrapping.as_written(std::wstring_view(text).substr(inside, end - inside)));
  return true;
}

}  // namespace

std::wstring as_written(std::wstring message) {
  if (message.size() > kLongest || message.find(L"$zelto") == kNone) return message;
  for (const std::wstring_view words : {kStatementPlace, kPatternPlace, kOfPlace}) {
    for (std::size_t at = 0; (at = message.find(words, at)) != kNone;) message.erase(at, words.size());
  }
  for (const Wrapping& wrapping : kWrappings) {
    while (unwrap(message, wrapping)) continue;
  }
  return message;
}

}  // namespace zelto::language
