// The constants that every script has: vbCrLf, vbTextCompare …
#pragma once

#include <optional>
#include <string_view>
#include <variant>

namespace zelto::vbscript {

using ConstantValue = std::variant<int, std::wstring_view, bool>;

// In any letter case.
std::optional<ConstantValue> constant_of(std::wstring_view folded_name);

}  // namespace zelto::vbscript
