// What the leak sanitizer is told, in the builds that have it. Where a library was loaded late, as database
// drivers are, it guesses where the library's thread-local variables lie, and a wrong guess crashes it. So it
// does not look there, and takes what the loader keeps there for lost. The driver of PostgreSQL loses some 300 bytes of
// its own for each statement with parameters that the server refuses; that our handles are all freed, the tests ask the
// runtime's own count (DatabaseHandles).
#include <korlib/types.h>

#ifdef KOR_SANITIZED

extern "C" KORLIB_API const char* __lsan_default_options() { return "print_suppressions=0:use_tls=0"; }
extern "C" KORLIB_API const char* __lsan_default_suppressions() {
  return "leak:dl_open_worker_begin\n"
         "leak:_dlerror_run\n"
         "leak:psqlodbcw.so\n";
}

#endif
