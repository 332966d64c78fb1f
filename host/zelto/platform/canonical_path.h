// The one true name of a file, whether it exists or not.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelto {

// An absolute path without ".", "..", repeated slashes or symbolic links. Of what does not exist the text
// is cleaned the same way; whatever does exist along the way is followed, so two paths with a common
// beginning really lie in one folder. Nothing when links go round in a circle, a folder may not be looked
// into, or the text holds a NUL.
std::optional<std::string> canonical_path(std::string_view path);

}  // namespace zelto
