// The script engine: one Engine for each worker thread, one Realm for each request.
//
//   Engine engine;                        // on the worker's thread, for as long as it lives
//   engine.set_time_limit(90s);
//   {
//     Realm realm(engine);
//     realm.set_object(L"Response", response);
//     realm.set_output(response);
//     Outcome outcome = realm.run(program);
//   }                                     // everything that the script held has been released here
//
// Values cross between script and objects by these rules:
//
//   undefined            as a value VT_EMPTY. As an argument it is omitted (VT_ERROR, DISP_E_PARAMNOTFOUND) where
//                        the parameter is optional, and VT_EMPTY where it is required: see below
//   null, boolean        VT_NULL, VT_BOOL
//   string               VT_BSTR; UTF-16 to UTF-32, lone surrogates become U+FFFD
//   number               VT_I4 when integral and in range, else VT_R8; every number type comes back as one
//   bigint               VT_I8; a 64-bit integer beyond Number.MAX_SAFE_INTEGER comes back as one, exactly
//   Date                 VT_DATE, in local time
//   ArrayBuffer, bytes   VT_ARRAY | VT_UI1, which comes back as Uint8Array
//   array                VT_ARRAY | VT_VARIANT by value, nested arrays likewise
//   object, function     VT_DISPATCH: a wrapper, the same one each time while somebody holds it
//   automation object    VT_DISPATCH: the object itself
//
// What the script expects of an automation object, be it of the host or of a component:
//   - GetIDsOfNames finds members in any letter case and answers DISP_E_UNKNOWNNAME otherwise. Reading such a
//     name gives undefined, as pages that test for features expect; setting or calling it is an error whose words
//     name the object's kind and the nearest name, as far as GetTypeInfo tells them (GetDocumentation of
//     MEMBERID_NIL, GetNames of small identifiers);
//   - a member that is a method answers DISP_E_MEMBERNOTFOUND to DISPATCH_PROPERTYGET: `o.Close` is then a
//     function. A property that needs arguments answers DISP_E_BADPARAMCOUNT without them: `o.Item(1)`;
//   - `o.Name()` calls a method, and reads a property that takes no arguments: `rs.EOF()`. That holds for names that
//     begin with a capital letter, and for some that pages write in small ones (rewriter.h);
//   - `typeof o` is "function", because the object can be called: the engine has no object that can be called and
//     is "object". `o instanceof Function` is false;
//   - `o(args)` and `o[1]` invoke DISPID_VALUE, `o(args) = v` puts it; `for (x of o)` and Enumerator ask
//     for DISPID_NEWENUM; text and numbers are made from DISPID_VALUE without arguments;
//   - assignments are DISPATCH_PROPERTYPUT, of an object DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
//   - an `undefined` argument is passed as omitted. An object whose parameter must be given either takes that for
//     the empty value, or refuses it before the member runs: DISP_E_TYPEMISMATCH or DISP_E_PARAMNOTFOUND, and its
//     index in *puArgErr, which is otherwise left alone. Then the call is made again with VT_EMPTY for it. So
//     what `Session("none")` or `m.Request("none")` gave may be passed on as the text "" or the number 0;
//   - a failing HRESULT becomes an Error with message (error object's description), source and number;
//   - names are resolved once for each ITypeInfo that GetTypeInfo answers, so objects that share one must
//     share their members; objects without one are asked once for each name and object.
#pragma once

#include <chrono>
#include <memory>
#include <string_view>

#include <korlib/dispatch.h>

#include "language/program.h"
#include "script/outcome.h"
#include "script/stack.h"
#include "script/unwind.h"

namespace zelto::script {

class EngineState;
class RealmState;

// A virtual machine. Made, used and destroyed on one thread, outliving the realms that it runs.
class Engine {
 public:
  Engine();
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // The engine of the calling thread, null when it has none.
  static Engine* current() noexcept;

  // How long the script may take, counted from the start of the outermost run. May be called while a
  // script runs (Server.ScriptTimeout), and then counts from that start too. Zero or less: no limit.
  void set_time_limit(std::chrono::milliseconds limit);
  std::chrono::milliseconds time_limit() const noexcept;

  // How much memory the objects of scripts may take, looked at a few times a second while a script runs. Zero:
  // no limit.
  void set_memory_limit(std::size_t bytes);

  EngineState& state() noexcept { return *state_; }

 private:
  std::unique_ptr<EngineState> state_;
  Engine* previous_;
};

// A global object of its own with everything that a script makes in it. A page that is executed by
// another one gets a realm of the same engine while the first still runs.
class Realm {
 public:
  explicit Realm(Engine& engine);
  // Releases every object that the script holds. Wrappers of script objects that somebody kept, in a
  // Session say, stay safe to call and to release from any thread, and answer a clear error.
  ~Realm();
  Realm(const Realm&) = delete;
  Realm& operator=(const Realm&) = delete;

  // A global name for an object, e.g. L"Response". The script may shadow it.
  void set_object(std::wstring_view name, IDispatch* object);

  // Where page text and `<%= %>` go: the object's ZeltoTypeLibrary::IResponse. Null is allowed.
  void set_output(IDispatch* response);

  // Where `console.log` and its like go; nowhere without one.
  void set_log(LogSink sink);

  // Runs the program to its end. May be called from within a member that a script is calling.
  Outcome run(const std::shared_ptr<const language::Program>& program);

  // Calls a function of the script without arguments, if there is one: `Session_OnStart`. A missing one
  // is `completed`.
  Outcome call(std::wstring_view function);

  // What the script declared, as the object that `this` is at top level: var, function, let, const and
  // class names; the engine's own globals and the names given with set_object are not among them. The
  // caller releases it.
  IDispatch* global();

 private:
  std::unique_ptr<RealmState> state_;
};

// Whether the object is a wrapper of a script's object, which does not outlive its realm: a store that
// outlives requests refuses it.
bool is_script_object(IUnknown* object) noexcept;

}  // namespace zelto::script
