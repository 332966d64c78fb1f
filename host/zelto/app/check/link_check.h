// Links to what is never served.
#pragma once

#include <string>
#include <string_view>

#include "app/check/findings.h"
#include "site/protected_names.h"

namespace zelto::check {

// Looks at href, src and action in a page, a template or an HTML file; at those alone that stand there as a whole.
void check_links(const std::string& file, std::wstring_view text, bool is_page, const ProtectedNames& protected_names,
                 Findings& findings);

}  // namespace zelto::check
