// What a file's extension says about its content.
#pragma once

#include <string_view>

namespace zelto {

// The Content-Type of a file name, "application/octet-stream" when the extension says nothing.
std::string_view content_type_of(std::string_view file_name);

}  // namespace zelto
