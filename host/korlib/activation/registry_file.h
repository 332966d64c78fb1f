// The registry store's tree, and its form in a file.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "base/letter_case.h"

namespace korlib::activation {

// Letter case does not matter in names; it is kept as first written.
struct RegistryNameLess {
  using is_transparent = void;
  bool operator()(std::wstring_view a, std::wstring_view b) const {
    return std::ranges::lexicographical_compare(a, b, {}, base::ascii_lower<wchar_t>, base::ascii_lower<wchar_t>);
  }
};

struct RegistryKey {
  std::map<std::wstring, std::wstring, RegistryNameLess> values;
  std::map<std::wstring, RegistryKey, RegistryNameLess> keys;
};

inline constexpr int kMaxRegistryDepth = 32;

// Both answer false and say in *problem what is wrong. A file that is not there is an empty tree.
bool load_registry(const std::filesystem::path& file, RegistryKey* root, std::string* problem);
// Written beside the file and renamed over it.
bool save_registry(const std::filesystem::path& file, const RegistryKey& root, std::string* problem);

}  // namespace korlib::activation
