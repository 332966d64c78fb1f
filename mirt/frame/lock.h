// A critical section as an object: `std::lock_guard guard(lock_);`
#pragma once

#include <mutex>

#include <korlib/winapi.h>

// Not recursive: a thread that holds it and enters again waits for ever.
class CCriticalSection {
 public:
  CCriticalSection() { InitializeCriticalSection(&section_); }
  ~CCriticalSection() { DeleteCriticalSection(&section_); }
  CCriticalSection(const CCriticalSection&) = delete;
  CCriticalSection& operator=(const CCriticalSection&) = delete;

  void lock() { EnterCriticalSection(&section_); }
  void unlock() { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};
