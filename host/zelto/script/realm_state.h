// What a Realm is inside: a global object, and everything that crosses its border.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <zelto/asp.h>

#include "script/engine_state.h"
#include "script/held.h"
#include "script/outcome.h"
#include "script/prelude.h"
#include "script/stack.h"
#include "script/unwind.h"

namespace zelto::script {

class ScriptObject;

// Wrappers whose last reference went on another thread, waiting for the realm's own.
struct Graveyard {
  std::mutex lock;
  std::vector<ScriptObject*> dead;
  bool closed = false;  // the realm is gone: wrappers free themselves
};

class RealmState {
 public:
  explicit RealmState(EngineState& engine);
  ~RealmState();
  RealmState(const RealmState&) = delete;
  RealmState& operator=(const RealmState&) = delete;

  EngineState& engine() noexcept { return engine_; }
  JSContextRef context() const noexcept { return context_; }
  JSObjectRef global_object() const noexcept { return global_; }
  const std::shared_ptr<Graveyard>& graveyard() const noexcept { return graveyard_; }

  void set_object(std::wstring_view name, IDispatch* object);
  void set_output(IDispatch* response);
  ZeltoTypeLibrary::IResponse* output() const noexcept { return output_.get(); }
  IDispatch* server() const noexcept { return server_.get(); }
  Outcome run(const std::shared_ptr<const language::Program>& program);
  Outcome call(std::wstring_view function);
  const language::Program* running() const noexcept { return running_; }
  bool has_lexical_names() const noexcept { return has_lexical_names_; }

  // Values. A failure is left in *exception (never null) and answered with false or null.
  bool to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception);
  JSValueRef to_script(const VARIANT& value, JSValueRef* exception);
  JSObjectRef wrap(IDispatch* dispatch);
  // The counted wrapper of a script's object.
  CComPtr<IDispatch> unwrap(JSObjectRef object);
  // Whether it is a function of the script or a member that was read without being called. To the engine
  // every automation object is one, because it can be called for its default member.
  bool is_function(JSValueRef value) const;
  // Whether an object of the script has the name, itself or by its class: what every object has is not the
  // script's.
  bool has_own_name(JSObjectRef object, const JsString& name) const;
  // What the script's object steps through, as an array.
  JSValueRef items_of(JSObjectRef object, JSValueRef* exception);
  JSObjectRef make(JSClassRef jsclass, std::unique_ptr<Held> held);

  // Every call of an object passes here first; false with an exception when the page is over, late, or
  // out of stack.
  bool may_call(JSValueRef* exception);
  // Makes the call. A failing result is answered as it is. An omitted argument that the object says it cannot
  // take is VT_EMPTY in `params` afterwards.
  HRESULT invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result);
  // The exception for a failing result.
  void raise(HRESULT hr, std::wstring_view member, JSValueRef* exception);
  void raise_text(const wchar_t* text, HRESULT hr, JSValueRef* exception);
  void raise_type_error(const wchar_t* text, JSValueRef* exception);
  void raise_reference_error(const wchar_t* text, JSValueRef* exception);
  void raise_out_of_stack(JSValueRef* exception);
  // The other way: a failing result with the thread's error object, the exception kept as cause.
  HRESULT failure_of(JSValueRef exception);

  // A member that an automation object was asked for and does not have. Reading it gives undefined; whoever calls
  // it, or names it as a statement, learns from the words what is missing.
  void note_missing(const AutomationObject& held, std::u16string_view name);
  // Raises it, if it was read just now.
  void raise_missing(JSValueRef* exception);
  // Of an error of the engine, with its message: that as the page's author would have it, and the number that older
  // pages know, or 0.
  void put_into_words(std::wstring_view name, ScriptError* error) const;
  void set_log(LogSink sink) { log_ = std::move(sink); }
  void log(std::wstring_view level, std::wstring_view text);

  // Where something that is no Error was thrown.
  void note_throw(JSValueRef value);
  // A component asked for a name that the script does not have: should the call fail for that, it is named.
  void note_unknown(std::u16string name) { unknown_name_ = std::move(name); }

  void adopt(Held* held) noexcept;
  void abandon(Held* held) noexcept;
  void forget(AutomationObject* object) noexcept;
  void forget(ScriptObject* object) noexcept;
  void note_rejection(JSValueRef reason);

  JSValueRef property(JSObjectRef object, const JsString& name) const;
  std::wstring text_of(JSValueRef value) const;
  // Whether the page's script declared the name; `is_lexical` when it is no property of the global object.
  bool declares(const JsString& name, bool* is_lexical);
  JSValueRef lexical_value(const JsString& name, JSValueRef* exception);
  void set_lexical_value(const JsString& name, JSValueRef value, JSValueRef* exception);

 private:
  Outcome outcome_of(JSValueRef exception);
  bool read_words(JSValueRef exception, ScriptError* out);
  ScriptError describe_exception(JSValueRef exception);
  ScriptError describe_syntax(const language::Program& program, const ParsedScript& parsed);
  bool locate(JSValueRef error, ScriptError* out) const;
  static void place_like(const ScriptError& other, ScriptError* out);
  static void place(const language::Program& program, int line, int column, ScriptError* out);
  HRESULT invoke_once(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, UINT* refused);
  std::wstring words_for_missing() const;
  bool is_about_missing(std::wstring_view message) const;
  std::wstring words_for(HRESULT hr, std::wstring_view member) const;
  void run_prelude();
  void disconnect_wrappers();
  void release_foreign_wrappers();
  JSObjectRef make_error(ErrorKind kind, std::wstring_view message);
  void remember(const std::shared_ptr<const language::Program>& program);

  EngineState& engine_;
  JSGlobalContextRef context_;
  JSObjectRef global_;
  JSObjectRef make_error_ = nullptr;  // functions of the prelude, protected
  JSObjectRef make_array_ = nullptr;
  JSObjectRef has_name_ = nullptr;
  JSObjectRef object_prototype_ = nullptr;
  std::shared_ptr<Graveyard> graveyard_ = std::make_shared<Graveyard>();
  std::unordered_map<IUnknown*, AutomationObject*> automation_objects_;
  // Several for one object when some are on their way out on other threads.
  std::unordered_multimap<JSObjectRef, ScriptObject*> script_objects_;
  Held* held_ = nullptr;
  CComPtr<ZeltoTypeLibrary::IResponse> output_;
  CComPtr<IDispatch> server_;
  std::unordered_map<std::string, std::shared_ptr<const language::Program>> programs_;
  const language::Program* running_ = nullptr;
  bool has_lexical_names_ = false;
  std::u16string unknown_name_;  // the last that a component asked for in vain, in the call that runs
  struct Missing {
    std::u16string name;
    CComPtr<IDispatch> object;
    std::wstring kind;
    bool is_fresh = false;  // nothing has crossed the border since
  };
  Missing missing_;
  LogSink log_;
  std::unique_ptr<ScriptError> thrown_at_;  // the place of the last throw that was of no Error
  std::unique_ptr<ScriptError> rejection_;  // the first promise that was rejected with nobody listening
};

}  // namespace zelto::script
