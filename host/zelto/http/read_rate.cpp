#include "http/read_rate.h"

namespace zelto {

void ReadRate::begin(Clock::time_point now) {
  began_ = now;
  bytes_ = 0;
}

bool ReadRate::is_too_slow(std::uint64_t bytes, Clock::time_point now) {
  bytes_ += bytes;
  if (span_.count() == 0 || now - began_ < span_) return false;
  const double seconds = std::chrono::duration<double>(now - began_).count();
  if (static_cast<double>(bytes_) < static_cast<double>(least_) * seconds) return true;
  begin(now);
  return false;
}

}  // namespace zelto
