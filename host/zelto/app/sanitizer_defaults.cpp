// What the sanitizers are told, in the builds that have one.
#include <korlib/types.h>

#include <array>
#include <cstdlib>

#ifdef KOR_SANITIZED

// The script engine's own threads may still hold a few bytes when the program ends.
extern "C" KORLIB_API const char* __lsan_default_suppressions() { return "leak:libjavascriptcoregtk\n"; }
extern "C" KORLIB_API const char* __lsan_default_options() { return "print_suppressions=0"; }

#endif

#ifdef __SANITIZE_THREAD__

// The engine comes without instrumentation: what its threads share is ordered by locks and fences that the
// thread sanitizer does not see.
extern "C" KORLIB_API const char* __tsan_default_suppressions() {
  return "called_from_lib:libjavascriptcoregtk-4.1.so\n"
         "called_from_lib:libglib-2.0.so\n";
}

namespace {

// The sanitizer holds back the signals by which the engine stops its threads, which would then wait for each
// other. Read when the engine is first used.
[[gnu::constructor]] void keep_engine_from_signalling() {
  for (const char* option : std::array{"JSC_useConcurrentGC", "JSC_useConcurrentJIT"}) ::setenv(option, "0", 0);
}

}  // namespace

#endif
