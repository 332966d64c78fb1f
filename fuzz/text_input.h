// What a fuzz target makes of its bytes, and how it says that a rule was broken.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace fuzz {

// One character a byte, except that 0xFF takes the next three bytes for a wider character.
inline std::wstring text_from(const std::uint8_t* data, std::size_t size) {
  std::wstring text;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0xFF && size - i > 3) {
      text.push_back(static_cast<wchar_t>(data[i + 1] << 16 | data[i + 2] << 8 | data[i + 3]));
      i += 3;
    } else {
      text.push_back(static_cast<wchar_t>(data[i]));
    }
  }
  return text;
}

// Any double: the first eight bytes, as this machine keeps them.
inline double double_from(const std::uint8_t* data, std::size_t size) {
  double value = 0;
  if (size > 0) std::memcpy(&value, data, std::min(size, sizeof value));
  return value;
}

inline void require(bool holds, const char* rule) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", rule);
  std::abort();
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
