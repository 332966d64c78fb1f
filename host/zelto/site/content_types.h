// What a file's extension says about its content.
#pragma once

#include <string_view>

namespace zelto {

// The extension of a file name with its dot, ".css"; empty when it has none.
constexpr std::string_view extension_of(std::string_view file_name) {
  const auto dot = file_name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : file_name.substr(dot);
}

// The Content-Type of a file name, "application/octet-stream" when the extension says nothing.
std::string_view content_type_of(std::string_view file_name);

}  // namespace zelto
