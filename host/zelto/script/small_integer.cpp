#include "script/small_integer.h"

#include <cstdint>
#include <limits>

namespace zelto::script {
namespace {

static_assert(sizeof(JSValueRef) == sizeof(std::uint64_t));

std::uint64_t bits_of(JSValueRef value) { return reinterpret_cast<std::uintptr_t>(value); }

// What stands in front of the 32 bits of every integer, in a word that is no address; 0 when that is not so.
std::uint64_t find_mark(JSContextRef ctx) {
  constexpr std::uint64_t kBeyondAddresses = std::uint64_t{1} << 48;
  const std::uint64_t mark = bits_of(JSValueMakeNumber(ctx, 0));
  if (static_cast<std::uint32_t>(mark) != 0 || mark < kBeyondAddresses) return 0;
  for (const LONG number : {1, -1, std::numeric_limits<LONG>::max(), std::numeric_limits<LONG>::min()}) {
    if (bits_of(JSValueMakeNumber(ctx, number)) != (mark | static_cast<std::uint32_t>(number))) return 0;
  }
  for (const double number : {0.5, -0.5, 4294967296.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    if (bits_of(JSValueMakeNumber(ctx, number)) >> 32 == mark >> 32) return 0;
  }
  return mark;
}

}  // namespace

std::optional<LONG> small_integer(JSContextRef ctx, JSValueRef value) noexcept {
  static const std::uint64_t mark = find_mark(ctx);
  const std::uint64_t bits = bits_of(value);
  if (mark == 0 || bits >> 32 != mark >> 32) return std::nullopt;
  return static_cast<LONG>(static_cast<std::uint32_t>(bits));
}

}  // namespace zelto::script
