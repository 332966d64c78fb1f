// JavaScriptCore, and those of its exported functions that no installed header declares.
#pragma once

#include <JavaScriptCore/JavaScript.h>

extern "C" {

// Calls back when the script has used that much time; `true` terminates it, past every catch and finally.
using JSShouldTerminateCallback = bool (*)(JSContextRef ctx, void* context);
JS_EXPORT void JSContextGroupSetExecutionTimeLimit(JSContextGroupRef group, double seconds,
                                                   JSShouldTerminateCallback callback, void* context);

// A script that has been parsed once for a group; contexts of the group share what was compiled of it.
using JSScriptRef = struct OpaqueJSScript*;
JS_EXPORT JSScriptRef JSScriptCreateFromString(JSContextGroupRef group, JSStringRef url, int first_line,
                                               JSStringRef source, JSStringRef* error, int* error_line);
JS_EXPORT JSValueRef JSScriptEvaluate(JSContextRef ctx, JSScriptRef script, JSValueRef this_value,
                                      JSValueRef* exception);
JS_EXPORT void JSScriptRelease(JSScriptRef script);

// A reference that does not keep its object alive, and reads as null once the object is garbage.
using JSWeakRef = struct OpaqueJSWeak*;
JS_EXPORT JSWeakRef JSWeakCreate(JSContextGroupRef group, JSObjectRef object);
JS_EXPORT JSObjectRef JSWeakGetObject(JSWeakRef weak);
JS_EXPORT void JSWeakRelease(JSContextGroupRef group, JSWeakRef weak);

// Properties that only the host sees; the garbage collector follows them.
JS_EXPORT bool JSObjectSetPrivateProperty(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef value);
JS_EXPORT JSValueRef JSObjectGetPrivateProperty(JSContextRef ctx, JSObjectRef object, JSStringRef name);

// The engine's lock, which the same thread may take more than once.
JS_EXPORT void JSLock(JSContextRef ctx);
JS_EXPORT void JSUnlock(JSContextRef ctx);

// Has the engine stop its threads by that signal. False when it has chosen one already.
JS_EXPORT bool JSConfigureSignalForGC(int signal);

// `function` is called with each promise that is rejected without a handler, and the reason. The context never
// lets go of it.
JS_EXPORT void JSGlobalContextSetUnhandledRejectionCallback(JSGlobalContextRef ctx, JSObjectRef function,
                                                            JSValueRef* exception);

// An object with numbers, "heapCapacity" in bytes among them. The engine counts all objects one by one for it.
JS_EXPORT JSObjectRef JSGetMemoryUsageStatistics(JSContextRef ctx);
JS_EXPORT void JSSynchronousGarbageCollectForDebugging(JSContextRef ctx);

}  // extern "C"

namespace zelto::script {

// While one lives, the engine's lock is taken. The engine gives it away before it calls a function, and each call of
// the engine takes it and gives it back, which takes longer than most of these calls. No component is called while
// it is held: the engine counts the depth of the stack from where its lock was taken.
class EngineLock {
 public:
  explicit EngineLock(JSContextRef ctx) : ctx_(ctx) { JSLock(ctx); }
  ~EngineLock() { JSUnlock(ctx_); }
  EngineLock(const EngineLock&) = delete;
  EngineLock& operator=(const EngineLock&) = delete;

 private:
  JSContextRef ctx_;
};

}  // namespace zelto::script
