// Counts of what is alive, so that a test can tell that nothing was leaked.
//
//   const std::int64_t before = korlib_host::live_objects();
//   run();
//   EXPECT_EQ(before, korlib_host::live_objects());
//
// The counts are exact when the threads that make and free have come to rest; while they run, a count says how many
// there were at some moment. A component's own objects do not count here: its module counts them.
#pragma once

#include <cstdint>
#include <optional>

#include <korlib/types.h>

namespace korlib_host {

// Objects of the host's own classes that have been made and not yet destroyed, in all threads. Every build counts
// them. A host that has ended its pages, sessions and the application finds 0.
KORLIB_API std::int64_t live_objects() noexcept;

// Strings that have been allocated and not yet freed, in all threads. Counting costs an atomic
// operation a string, so only debug and sanitized builds count; others answer nothing.
KORLIB_API std::optional<std::int64_t> live_strings() noexcept;

// While it lives, one string allocation of the calling thread fails: the `nth` from now, 1 being the
// next. For tests of what happens when memory is short; in builds that do not count strings nothing
// fails. One at a time on a thread. A test makes every allocation fail in its turn:
//
//   for (unsigned nth = 1;; ++nth) {
//     const korlib_host::StringFailure failure(nth);
//     const HRESULT hr = member->get_Title(title.put());
//     if (!failure.has_happened()) break;  // the member needs fewer strings
//     EXPECT_EQ(E_OUTOFMEMORY, hr);
//   }
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

// A member or base of every host object: counts it for as long as it lives. Counted (counted.h) brings one; an object
// that counts its references in another way has its own.
class LiveObject {
 public:
  LiveObject() noexcept { count_live_object(1); }
  ~LiveObject() { count_live_object(-1); }
  LiveObject(const LiveObject&) = delete;
  LiveObject& operator=(const LiveObject&) = delete;
};

}  // namespace korlib_host
