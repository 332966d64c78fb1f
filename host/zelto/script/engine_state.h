// What an Engine is inside: the virtual machine, the clock, and how a page is left in the middle.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include "language/program.h"
#include "script/jsc.h"
#include "script/member_names.h"
#include "script/outcome.h"
#include "script/text.h"

namespace zelto::script {

class Held;
class RealmState;

// A script parsed for one engine.
class ParsedScript {
 public:
  ParsedScript(JSContextGroupRef group, std::u16string_view text, const std::string& url);
  ParsedScript(const ParsedScript&) = delete;
  ParsedScript& operator=(const ParsedScript&) = delete;
  ~ParsedScript() {
    if (script_) JSScriptRelease(script_);
  }
  JSScriptRef get() const noexcept { return script_; }  // null: a syntax error
  const std::wstring& message() const noexcept { return message_; }
  int line() const noexcept { return line_; }

 private:
  JSScriptRef script_ = nullptr;
  std::wstring message_;
  int line_ = 0;
};

class EngineState {
 public:
  EngineState();
  ~EngineState();
  EngineState(const EngineState&) = delete;
  EngineState& operator=(const EngineState&) = delete;

  static EngineState* current() noexcept;

  JSContextGroupRef group() const noexcept { return group_; }
  // A function that does nothing and belongs to no realm.
  JSObjectRef idle_function() const noexcept { return idle_function_; }
  bool is_own_thread() const noexcept { return std::this_thread::get_id() == thread_; }

  // One level of running script. The outermost starts the clock and forgets how the last page ended.
  class Run {
   public:
    explicit Run(EngineState& engine);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

   private:
    EngineState& engine_;
  };

  void set_time_limit(std::chrono::milliseconds limit);
  std::chrono::milliseconds time_limit() const noexcept { return limit_; }
  void set_memory_limit(std::size_t bytes) { memory_limit_ = bytes; }
  void stop() noexcept;
  bool is_running() const noexcept { return depth_ > 0; }
  bool has_stopped() const noexcept { return stopped_; }
  bool has_timed_out() const noexcept { return timed_out_; }
  bool is_exhausted() const noexcept { return is_exhausted_; }
  bool is_unwinding() const noexcept { return stopped_ || timed_out_ || is_exhausted_; }
  // Looks at the clock as well: time spent in objects counts.
  bool must_unwind();
  // Has the virtual machine end the script soon, whatever it catches.
  void terminate_soon();

  // The realm whose code is running; null for one that is gone.
  RealmState* realm_of(JSContextRef ctx) const;
  void add_realm(RealmState* realm);
  void remove_realm(RealmState* realm);
  // What it held is garbage now. The next page shall not be blamed for it where it was too much.
  void realm_has_ended();

  const ParsedScript& parsed(const std::shared_ptr<const language::Program>& program);
  MemberCache& members() noexcept { return members_; }

  // From finalizers, on any thread: the object is let go at the next opportunity on the engine's thread.
  void bury(Held* held) noexcept;
  void release_buried();

  // The exception that left a script function for a component, until it comes back or is done with.
  struct Departed {
    JSGlobalContextRef context = nullptr;
    JSValueRef exception = nullptr;  // protected; null: there is none
    HRESULT code = S_OK;             // what the function answered
    CComPtr<IErrorInfo> info;        // the error object that it left with that
    ScriptError words;
  };
  void remember_exception(Departed departed);
  void forget_exception();
  const Departed& departed() const noexcept { return departed_; }

  // What automation objects, their members, and so on are in the script.
  struct Classes {
    JSClassRef object = nullptr;
    JSClassRef member = nullptr;
    JSClassRef reference = nullptr;
    JSClassRef opaque = nullptr;
    JSClassRef helper = nullptr;
  };
  const Classes& classes() const noexcept { return classes_; }
  JSScriptRef prelude() const noexcept { return prelude_->get(); }

 private:
  void start_watchdog();
  void settle();
  bool is_late() const { return limit_.count() > 0 && std::chrono::steady_clock::now() - start_ >= limit_; }
  static bool on_time_limit(JSContextRef ctx, void* engine);

  JSContextGroupRef group_;
  std::thread::id thread_ = std::this_thread::get_id();
  EngineState* previous_;
  Classes classes_;
  JSGlobalContextRef idle_context_;
  JSObjectRef idle_function_;
  std::unique_ptr<ParsedScript> prelude_;
  std::chrono::milliseconds limit_{0};
  std::size_t memory_limit_ = 0;
  std::chrono::steady_clock::time_point start_;
  int depth_ = 0;
  bool stopped_ = false;
  bool timed_out_ = false;
  bool is_exhausted_ = false;
  bool is_terminating_ = false;  // the watchdog has been asked for the end of a script that goes on
  std::vector<RealmState*> realms_;
  MemberCache members_;
  struct CachedScript {
    std::weak_ptr<const language::Program> program;
    std::unique_ptr<ParsedScript> parsed;
  };
  std::unordered_map<const language::Program*, CachedScript> scripts_;
  Departed departed_;
  std::mutex buried_lock_;
  std::vector<Held*> buried_;
  std::atomic<bool> has_buried_ = false;
};

}  // namespace zelto::script
