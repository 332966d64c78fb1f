#include "text/html.h"

#include "text/charset.h"

namespace zelto {

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    switch (c) {
      case L'<':
        out += L"&lt;";
        break;
      case L'>':
        out += L"&gt;";
        break;
      case L'&':
        out += L"&amp;";
        break;
      case L'"':
        out += L"&quot;";
        break;
      default:
        if (encodes(code_page, c)) {
          out += c;
        } else {
          out += L"&#" + std::to_wstring(static_cast<unsigned long>(c)) + L";";
        }
    }
  }
  return out;
}

}  // namespace zelto
