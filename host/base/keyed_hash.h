// A keyed hash (SipHash-1-3 over 64-bit words), so that a client who chooses the keys of a table cannot make them
// collide. The key is drawn at random once a process: hashes are not for keeping. Written out because neither the
// standard library nor Boost has one.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/letter_case.h"

namespace base {

class KeyedHash {
 public:
  // Hashes with different salts have nothing to do with each other.
  explicit KeyedHash(std::uint64_t salt) noexcept : KeyedHash(key(), salt) {}

  void add(std::uint64_t word) noexcept {
    v3_ ^= word;
    round();
    v0_ ^= word;
  }
  // Two characters a word, each as `map` has it, and the length: texts of different lengths never make the same words.
  template <class Map>
  void add_text(std::wstring_view text, Map map) noexcept {
    const auto code = [&map](wchar_t c) { return std::uint64_t{static_cast<std::uint32_t>(map(c))}; };
    std::size_t i = 0;
    for (; i + 1 < text.size(); i += 2) add(code(text[i]) << 32 | code(text[i + 1]));
    const std::uint64_t rest = i < text.size() ? code(text[i]) : 0;
    add(rest << 32 | static_cast<std::uint32_t>(text.size()));
  }
  std::size_t finish() noexcept {
    v2_ ^= 0xff;
    round();
    round();
    round();
    return v0_ ^ v1_ ^ v2_ ^ v3_;
  }

 private:
  struct Key {
    std::uint64_t low;
    std::uint64_t high;
  };
  static const Key& key() noexcept;  // random, drawn once a process

  KeyedHash(const Key& key, std::uint64_t salt) noexcept
      : v0_(key.low ^ 0x736f6d6570736575u),
        v1_(key.high ^ 0x646f72616e646f6du ^ salt),
        v2_(key.low ^ 0x6c7967656e657261u),
        v3_(key.high ^ 0x7465646279746573u) {}

  void round() noexcept {
    v0_ += v1_;
    v1_ = std::rotl(v1_, 13) ^ v0_;
    v0_ = std::rotl(v0_, 32);
    v2_ += v3_;
    v3_ = std::rotl(v3_, 16) ^ v2_;
    v0_ += v3_;
    v3_ = std::rotl(v3_, 21) ^ v0_;
    v2_ += v1_;
    v1_ = std::rotl(v1_, 17) ^ v2_;
    v2_ = std::rotl(v2_, 32);
  }

  std::uint64_t v0_, v1_, v2_, v3_;
};

// Of a name that is found in any letter case; what equal_folded() calls equal has one hash.
struct FoldedHash {
  std::size_t operator()(std::wstring_view name) const noexcept {
    KeyedHash hash(0);
    hash.add_text(name, fold);
    return hash.finish();
  }
};

}  // namespace base
