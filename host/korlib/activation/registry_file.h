// The registry store's tree, and its form in a file.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace korlib::activation {

// Names in letter cases as written; the maps are keyed by their folded form.
struct RegistryValue {
  std::wstring name;
  std::wstring text;
};

struct RegistryKey {
  std::wstring name;
  std::map<std::wstring, RegistryValue> values;
  std::map<std::wstring, RegistryKey> keys;
};

inline constexpr int kMaxRegistryDepth = 32;

// Both answer false and say in *problem what is wrong. A file that is not there is an empty tree.
bool load_registry(const std::filesystem::path& file, RegistryKey* root, std::string* problem);
// Written beside the file and renamed over it.
bool save_registry(const std::filesystem::path& file, const RegistryKey& root, std::string* problem);

}  // namespace korlib::activation
