#include "text/html.h"

#include "text/charset.h"

namespace zelto {

namespace {

// The character by its name; empty for one that stands for itself.
std::wstring_view entity_of(wchar_t c) {
  switch (c) {
    case L'<':
      return L"&lt;";
    case L'>':
      return L"&gt;";
    case L'&':
      return L"&amp;";
    case L'"':
      return L"&quot;";
    default:
      return {};
  }
}

}  // namespace

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    if (const std::wstring_view entity = entity_of(c); !entity.empty()) {
      out += entity;
    } else if (encodes(code_page, c)) {
      out += c;
    } else {
      out += L"&#" + std::to_wstring(static_cast<unsigned long>(c)) + L";";
    }
  }
  return out;
}

}  // namespace zelto
