// The directive at the top of a page: <%@ Language="JavaScript" CodePage="65001" … %>
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <korlib/types.h>

#include "pages/tag_attributes.h"

namespace zelto::pages {

struct Directive {
  std::optional<Language> language;  // nothing when it does not say
  std::optional<LONG> code_page;     // nothing when it does not say
  std::optional<LONG> lcid;          // likewise
  bool uses_session = true;
};

// Reads what stands between "<%@" and "%>", or "@%>". Language, CodePage, EnableSessionState and LCID are
// obeyed, Transaction accepted. Throws std::string, a sentence, for anything else.
Directive read_directive(std::wstring_view text);

// The code page that a file's directive asks for, found before the file can be decoded; nothing without one.
std::optional<LONG> written_code_page(std::string_view bytes);
// 65001 without one.
LONG code_page_of_source(std::string_view bytes);

}  // namespace zelto::pages
