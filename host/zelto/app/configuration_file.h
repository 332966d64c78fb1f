// A site's zelto.toml: its keys, and the values that it gives them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// Throws WrongUse, with the file's name, the line and the key, for what cannot be read or understood.
class ConfigurationFile {
 public:
  // A file that does not exist gives no key a value.
  explicit ConfigurationFile(const std::string& name);
  ~ConfigurationFile();
  ConfigurationFile(const ConfigurationFile&) = delete;
  ConfigurationFile& operator=(const ConfigurationFile&) = delete;

  std::optional<bool> flag(std::string_view key) const;
  std::optional<std::string> text(std::string_view key) const;
  std::optional<std::vector<std::string>> texts(std::string_view key) const;
  std::optional<std::int64_t> number(std::string_view key, std::int64_t least, std::int64_t most) const;

  // Refuses the key's value: "zelto.toml:3: KEY WHAT; a right one is VALUE".
  [[noreturn]] void fail(std::string_view key, std::string_view what) const;

  // A line for every key, with its default or an example, and what it means.
  static std::string help();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zelto
