// Paths as pages write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelto {

// The path from the site's root that `path` names: one without a leading slash is relative to the folder
// of `page`. Backslashes count as slashes; "." and ".." are resolved. Nothing when it leaves the root or
// holds a NUL.
std::optional<std::string> resolve_virtual_path(std::string_view path, std::string_view page);

}  // namespace zelto
