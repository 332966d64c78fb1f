#include "script/small_integer.h"

#include <limits>

namespace zelto::script {
namespace {

static_assert(sizeof(JSValueRef) == sizeof(std::uint64_t));

std::uint64_t bits_of(JSValueRef value) { return reinterpret_cast<std::uintptr_t>(value); }

}  // namespace

std::uint64_t integer_mark(JSContextRef ctx) {
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

}  // namespace zelto::script
