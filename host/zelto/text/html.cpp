#include "text/html.h"

#include <algorithm>
#include <iterator>

#include "text/charset.h"

namespace zelto {

namespace {

struct Entity {
  wchar_t character;
  std::wstring_view name;
};
constexpr Entity kEntities[] = {{L'<', L"&lt;"}, {L'>', L"&gt;"}, {L'&', L"&amp;"}, {L'"', L"&quot;"}};

}  // namespace

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    const auto* const entity = std::ranges::find(kEntities, c, &Entity::character);
    if (entity != std::end(kEntities)) {
      out += entity->name;
    } else if (encodes(code_page, c)) {
      out += c;
    } else {
      out += L"&#" + std::to_wstring(static_cast<unsigned long>(c)) + L";";
    }
  }
  return out;
}

}  // namespace zelto
