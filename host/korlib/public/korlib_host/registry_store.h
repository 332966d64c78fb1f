// The registry: where registered classes are written down, a file that the host chooses.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <korlib/hresult.h>
#include <korlib/types.h>

namespace korlib_host {

// A tree of keys with named text values, standing for everything below HKEY_CLASSES_ROOT.
//
// A key is named by its path from the root, names separated by backslashes ("CLSID\{…}\InProcServer32");
// the empty path is the root. Letter case does not matter and is kept as first written. The value named
// "" is a key's default value.
//
// The file is JSON. Every change is on disk when the call returns, written beside the file and renamed
// over it, so that a reader sees the old store or the new one. Look-ups notice when another process has
// replaced the file, at once or within a time that the host may set. Processes that write at the same time take turns.
// Any thread may call any method.
//
// A file that is there but cannot be understood reads as an empty store and is never written over.
class KORLIB_API RegistryStore {
 public:
  // The file need not exist. A look-up looks at it when the last look is `look_every` ago: a component is asked for
  // several times a page, and another process seldom registers one.
  explicit RegistryStore(std::filesystem::path file, std::chrono::milliseconds look_every = {});
  ~RegistryStore();
  RegistryStore(const RegistryStore&) = delete;
  RegistryStore& operator=(const RegistryStore&) = delete;

  // False for a path that could not be a key.
  bool has_key(std::wstring_view key) const;
  // The text of a value; nothing where the key or the value is missing.
  std::optional<std::wstring> value(std::wstring_view key, std::wstring_view name) const;
  // The names of the keys right below it; none where it is missing.
  std::vector<std::wstring> keys(std::wstring_view key) const;

  // Makes the key and those above it that are missing; one that is there is left alone. An empty name
  // within the path, or one too long (255 characters), is E_INVALIDARG. E_FAIL when the file cannot be
  // written; nothing is changed then.
  HRESULT create_key(std::wstring_view key);
  // Makes the value or replaces its text. E_INVALIDARG when the key is not there, the name has more than 255 characters
  // or the text more than 32767. E_FAIL as above.
  HRESULT set_value(std::wstring_view key, std::wstring_view name, std::wstring_view text);
  // E_INVALIDARG when the key is not there, has keys below it, or is the root.
  HRESULT delete_key(std::wstring_view key);

  // What is wrong with the file, in words; empty when nothing is.
  std::string problem() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

// The store that ProgIDs and class identifiers are looked up in; none (null) at the start. Any thread may ask; a store
// that was replaced lives on for those who hold it.
KORLIB_API void set_registry(std::shared_ptr<RegistryStore> store);
KORLIB_API std::shared_ptr<RegistryStore> registry();

}  // namespace korlib_host
