// A site's zelto.toml: its keys, and the values that it gives them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/command_line.h"

namespace zelto {

// What is wrong in the file.
struct ConfigurationFault {
  int line = 1;    // from 1, like the column
  int column = 1;  // of the key that is not known, or of the value
  std::string text;
};

// What it says is the file's name, the line and the words of the first fault.
struct WrongConfiguration : WrongUse {
  WrongConfiguration(const std::string& name, std::vector<ConfigurationFault> found);
  std::vector<ConfigurationFault> faults;  // in the order of lines
};

class ConfigurationFile {
 public:
  // A file that does not exist gives no key a value. Throws WrongUse for one that cannot be read; what cannot be
  // understood is kept for throw_faults().
  explicit ConfigurationFile(const std::string& name);
  ~ConfigurationFile();
  ConfigurationFile(const ConfigurationFile&) = delete;
  ConfigurationFile& operator=(const ConfigurationFile&) = delete;

  std::optional<bool> flag(std::string_view key) const;
  std::optional<std::string> text(std::string_view key) const;
  std::optional<std::vector<std::string>> texts(std::string_view key) const;
  std::optional<std::int64_t> number(std::string_view key, std::int64_t least, std::int64_t most) const;

  // Refuses the key's value: "KEY WHAT; a right one is VALUE".
  void refuse(std::string_view key, std::string_view what) const;
  // Throws WrongConfiguration when anything was refused.
  void throw_faults() const;

  // A line for every key, with its default or an example, and what it means.
  static std::string help();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zelto
