// Locks, counters and time.
#include <time.h>

#include <chrono>
#include <thread>

#include <korlib/winapi.h>

#include "compat/weak.h"

// Any host may replace these four together. A replacement may be recursive; this component never enters
// a section that it holds, since here that waits for ever.
MIRT_WEAK void InitializeCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_init(section, nullptr); }
MIRT_WEAK void DeleteCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(section); }
MIRT_WEAK void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(section); }
MIRT_WEAK void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(section); }

// Any host may replace these two together. A replacement owes a sequentially consistent addition on the
// whole `long` and the value after it.
MIRT_WEAK long InterlockedIncrement(long volatile* value) { return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST); }
MIRT_WEAK long InterlockedDecrement(long volatile* value) { return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST); }

// A host may replace it, to account for the wait or to cut it short.
MIRT_WEAK void Sleep(unsigned int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// A host may replace it, to fix the time in a test, say: keys are drawn from a generator seeded with it.
MIRT_WEAK unsigned long GetTickCount() {
  const auto since_epoch = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<unsigned long>(std::chrono::duration_cast<std::chrono::milliseconds>(since_epoch).count());
}

// A host that tells modules about its threads may replace it to stop telling this one.
MIRT_WEAK BOOL DisableThreadLibraryCalls(void*) { return TRUE; }
