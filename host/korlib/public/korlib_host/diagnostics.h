// Counts of what is alive, so that a test can tell that nothing was leaked.
#pragma once

#include <cstdint>
#include <optional>

#include <korlib/types.h>

namespace korlib_host {

// Objects of the host's own classes that have been made and not yet destroyed, in all threads.
KORLIB_API std::int64_t live_objects() noexcept;

// Strings that have been allocated and not yet freed, in all threads. Counting costs an atomic
// operation a string, so only debug and sanitized builds count; others answer nothing.
KORLIB_API std::optional<std::int64_t> live_strings() noexcept;

// While it lives, one string allocation of the calling thread fails: the `nth` from now, 1 being the
// next. For tests of what happens when memory is short; in builds that do not count strings nothing
// fails.
class KORLIB_API StringFailure {
 public:
  explicit StringFailure(unsigned nth) noexcept;
  ~StringFailure();
  StringFailure(const StringFailure&) = delete;
  StringFailure& operator=(const StringFailure&) = delete;
  // Whether that allocation has been asked for, and failed.
  bool has_happened() const noexcept;
};

// Adds to what live_objects() answers; LiveObject is what calls it.
KORLIB_API void count_live_object(std::int64_t change) noexcept;

// A member or base of every host object: counts it for as long as it lives.
class LiveObject {
 public:
  LiveObject() noexcept { count_live_object(1); }
  ~LiveObject() { count_live_object(-1); }
  LiveObject(const LiveObject&) = delete;
  LiveObject& operator=(const LiveObject&) = delete;
};

}  // namespace korlib_host
