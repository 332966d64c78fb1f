#include "http/message.h"

#include <algorithm>

#include "base/letter_case.h"

namespace zelto {

const std::string* HttpRequest::header(std::string_view name) const {
  const auto found = std::ranges::find_if(headers, [&](const Header& h) { return base::equal_ascii(h.name, name); });
  return found == headers.end() ? nullptr : &found->value;
}

}  // namespace zelto
