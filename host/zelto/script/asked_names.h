// The names that components ask scripts for, as the engine has them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "script/text.h"

namespace zelto::script {

// A page controller asks for the same names of events and marks with every page, most of which are not there: making
// the engine's text of each took longer than looking for it.
class AskedNames {
 public:
  JsString of(std::wstring_view name) {
    if (const auto known = names_.find(name); known != names_.end()) return known->second.shared();
    JsString text(name);
    if (name.size() > kLongest) return text;  // names come from clients as well
    if (names_.size() >= kMost) names_.clear();
    names_.emplace(name, text.shared());
    return text;
  }

 private:
  static constexpr std::size_t kMost = 256;
  static constexpr std::size_t kLongest = 64;

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::wstring_view name) const { return std::hash<std::wstring_view>()(name); }
  };
  std::unordered_map<std::wstring, JsString, Hash, std::equal_to<>> names_;
};

}  // namespace zelto::script
