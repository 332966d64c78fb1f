#include "pages/directive.h"

#include "base/letter_case.h"
#include "text/charset.h"
#include "text/locale.h"
#include "text/numbers.h"

namespace zelto::pages {

namespace {

bool is_code_page(LONG number) { return charset_of(number).has_value(); }

// `what` ends the message about a value that is not such a number.
LONG read_number(const char* name, std::wstring_view value, bool (*is_known)(LONG), const char* what) {
  const std::optional<LONG> number = parse_number<LONG>(to_utf8(value));
  if (!number || !is_known(*number)) throw name + ("=\"" + ascii(value)) + "\" is not " + what;
  return *number;
}

bool read_boolean(std::wstring_view name, std::wstring_view value) {
  if (base::equal_ascii(value, L"true")) return true;
  if (base::equal_ascii(value, L"false")) return false;
  throw ascii(name) + "=\"" + ascii(value) + "\" is neither True nor False.";
}

}  // namespace

Directive read_directive(std::wstring_view text) {
  if (text.ends_with(L'@')) text.remove_suffix(1);
  const std::optional<std::vector<Attribute>> attributes = read_attributes(text);
  if (!attributes) throw std::string("A directive is written <%@ Name=\"value\" … %>.");
  Directive directive;
  for (const auto& [name, value] : *attributes) {
    if (base::equal_ascii(name, L"language")) {
      directive.language = language_of(value);
      if (!directive.language) {
        throw "This host runs pages in JavaScript and VBScript: Language=\"" + ascii(value) + "\" cannot be run.";
      }
    } else if (base::equal_ascii(name, L"codepage")) {
      directive.code_page =
          read_number("CodePage", value, is_code_page, "a code page that this host knows; 65001 is UTF-8.");
    } else if (base::equal_ascii(name, L"enablesessionstate")) {
      directive.uses_session = read_boolean(name, value);
    } else if (base::equal_ascii(name, L"lcid")) {
      directive.lcid =
          read_number("LCID", value, is_locale, "a locale that this host knows; 2048 is the neutral form.");
    } else if (!base::equal_ascii(name, L"transaction")) {
      throw "\"" + ascii(name) +
          "\" is not a directive: Language, CodePage, EnableSessionState, LCID and Transaction are.";
    }
  }
  return directive;
}

std::optional<LONG> written_code_page(std::string_view bytes) {
  for (std::size_t open = 0; (open = bytes.find("<%", open)) != std::string_view::npos;) {
    open = bytes.find_first_not_of(" \t\r\n\f", open + 2);
    if (open == std::string_view::npos) return std::nullopt;
    if (bytes[open++] != '@') continue;
    const std::size_t close = bytes.find("%>", open);
    if (close == std::string_view::npos) return std::nullopt;
    try {
      return read_directive(to_wide(bytes.substr(open, close - open))).code_page;
    } catch (const std::string&) {
      return std::nullopt;  // said with its line once the text is known
    }
  }
  return std::nullopt;
}

LONG code_page_of_source(std::string_view bytes) { return written_code_page(bytes).value_or(kUtf8CodePage); }

}  // namespace zelto::pages
