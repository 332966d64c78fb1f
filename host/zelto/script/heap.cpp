#include "script/heap.h"

#include <unistd.h>

#include <cstdio>

#include "script/text.h"

extern "C" {
JS_EXPORT JSObjectRef JSGetMemoryUsageStatistics(JSContextRef ctx);
JS_EXPORT void JSSynchronousGarbageCollectForDebugging(JSContextRef ctx);
}

namespace zelto::script {
namespace {

// Of the whole process; 0 when it is unknown.
std::size_t resident_bytes() {
  std::FILE* file = std::fopen("/proc/self/statm", "re");
  if (!file) return 0;
  unsigned long pages = 0;
  const bool is_read = std::fscanf(file, "%*s %lu", &pages) == 1;
  std::fclose(file);
  return is_read ? pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

// What the engine has taken for objects and their contents, garbage among them.
double heap_bytes(JSContextRef ctx) {
  JSObjectRef statistics = JSGetMemoryUsageStatistics(ctx);
  return JSValueToNumber(ctx, JSObjectGetProperty(ctx, statistics, JsString("heapCapacity").get(), nullptr), nullptr);
}

}  // namespace

bool heap_exceeds(JSContextRef ctx, std::size_t bytes) {
  // The engine counts all objects one by one for its answer, so it is asked only when it may matter.
  if (resident_bytes() <= bytes || heap_bytes(ctx) <= static_cast<double>(bytes)) return false;
  collect_garbage(ctx);
  return heap_bytes(ctx) > static_cast<double>(bytes);
}

void collect_garbage(JSContextRef ctx) { JSSynchronousGarbageCollectForDebugging(ctx); }

}  // namespace zelto::script
