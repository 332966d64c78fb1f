// What the leak checker is told, in the builds that have one.
#include <korlib/types.h>

#ifdef KOR_SANITIZED

// The script engine's own threads may still hold a few bytes when the program ends.
extern "C" KORLIB_API const char* __lsan_default_suppressions() { return "leak:libjavascriptcoregtk\n"; }
extern "C" KORLIB_API const char* __lsan_default_options() { return "print_suppressions=0"; }

#endif
