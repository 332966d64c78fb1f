#include "http/message.h"

#include <algorithm>

#include "text/ascii.h"

namespace zelto {

const std::string* HttpRequest::header(std::string_view name) const {
  const auto found = std::ranges::find_if(headers, [&](const Header& h) { return same_text(h.name, name); });
  return found == headers.end() ? nullptr : &found->value;
}

}  // namespace zelto
