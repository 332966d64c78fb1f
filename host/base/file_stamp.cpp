#include "base/file_stamp.h"

#include <ctime>

namespace base {

namespace {

// File systems take their times from a clock that ticks some hundred times a second.
constexpr long long kTick = 100'000'000;
// A time further ahead comes from a wrong clock, and would never settle.
constexpr long long kAhead = 2'000'000'000;

long long nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }

}  // namespace

FileStamp FileStamp::of(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

bool FileStamp::is_settled() const {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const long long age = nanoseconds(now) - changed;
  return age > kTick || age < -kAhead;
}

}  // namespace base
