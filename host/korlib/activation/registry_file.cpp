#include "activation/registry_file.h"

#include <korlib_host/unicode.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/file_descriptor.h"

namespace korlib::activation {

namespace {

using nlohmann::json;

// A key is {"values": {name: text}, "keys": {name: key}}; either member may be missing.
constexpr const char* kValues = "values";
constexpr const char* kKeys = "keys";
constexpr std::size_t kMaxFileBytes = 16 << 20;

json key_to_json(const RegistryKey& key) {
  json object = json::object();
  for (const auto& [name, text] : key.values) object[kValues][to_utf8(name)] = to_utf8(text);
  for (const auto& [name, below] : key.keys) object[kKeys][to_utf8(name)] = key_to_json(below);
  return object;
}

bool key_from_json(const json& object, int depth, RegistryKey* key) {
  if (!object.is_object() || depth > kMaxRegistryDepth) return false;
  for (const auto& [name, member] : object.items()) {
    if (!member.is_object() || (name != kValues && name != kKeys)) return false;
  }
  if (const auto values = object.find(kValues); values != object.end()) {
    for (const auto& [name, text] : values->items()) {
      if (!text.is_string()) return false;
      key->values[to_wide(name)] = to_wide(text.get_ref<const std::string&>());
    }
  }
  if (const auto keys = object.find(kKeys); keys != object.end()) {
    for (const auto& [name, below] : keys->items()) {
      if (!key_from_json(below, depth + 1, &key->keys[to_wide(name)])) return false;
    }
  }
  return true;
}

// 0, or the errno of the step that failed.
int write_through(base::FileDescriptor& file, std::string_view text) {
  constexpr mode_t kReadableByAll = 0644;
  if (const int error = base::write_all(file.get(), text)) return error;
  return fsync(file.get()) == 0 && fchmod(file.get(), kReadableByAll) == 0 && file.close() ? 0 : errno;
}

bool report(std::string* problem, const std::filesystem::path& file, const std::string& what) {
  *problem = file.string() + ": " + what;
  return false;
}

}  // namespace

bool load_registry(const std::filesystem::path& file, RegistryKey* root, std::string* problem) {
  *root = {};
  problem->clear();
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (status.type() == std::filesystem::file_type::not_found) return true;
  const auto size = std::filesystem::file_size(file, error);
  if (error) return report(problem, file, error.message());
  if (size > kMaxFileBytes) return report(problem, file, "too large for a registry store");
  std::ifstream stream(file, std::ios::binary);
  const json tree = json::parse(stream, nullptr, /*allow_exceptions=*/false);
  if (tree.is_discarded() || !key_from_json(tree, 0, root)) {
    *root = {};
    return report(problem, file, "not a registry store");
  }
  return true;
}

bool save_registry(const std::filesystem::path& file, const RegistryKey& root, std::string* problem) {
  const std::string text = key_to_json(root).dump(2) + "\n";
  std::string beside = file.string() + ".XXXXXX";
  base::FileDescriptor fresh(mkstemp(beside.data()));
  if (!fresh) return report(problem, file, std::strerror(errno));
  int error = write_through(fresh, text);
  if (error == 0 && rename(beside.c_str(), file.c_str()) != 0) error = errno;
  if (error == 0) return true;
  unlink(beside.c_str());
  return report(problem, file, std::strerror(error));
}

}  // namespace korlib::activation
