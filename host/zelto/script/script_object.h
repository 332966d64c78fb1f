// A script's object, as automation sees it.
#pragma once

#include <deque>
#include <string>
#include <thread>
#include <unordered_map>

#include <korlib/dispatch.h>
#include <korlib_host/counted.h>

#include "script/realm.h"
#include "script/rooted_values.h"

namespace zelto::script {

// Answered by wrappers only, so that they can be told from other objects.
struct IScriptObject : IDispatch {
 protected:
  ~IScriptObject() = default;
};

// Names are properties, in exact case: the object's own and those of its class. What every object has, such as
// toString or __proto__, is a name only where the script defines it: names come from clients as well. For the
// global object they are what the page declared. Identifiers are handed out as names are asked for.
//
//   a property        DISPATCH_PROPERTYGET reads, DISPATCH_PROPERTYPUT and …PUTREF write, DISPATCH_METHOD calls
//   a function        DISPATCH_PROPERTYGET alone is DISP_E_MEMBERNOTFOUND, so that whoever reads knows to call.
//                     An automation object that a name holds is a value, although it can be called
//   DISPID_VALUE      with arguments: calls a function (DISPATCH_METHOD), else o[key]; without: o as text
//   DISPID_NEWENUM    what for-of goes through
//
// Reference counts may change on any thread; everything else is for the realm's thread. When the realm
// has ended, calls fail with a text that says so.
class ScriptObject final : public korlib::Counted<IScriptObject> {
 public:
  ScriptObject(Realm& realm, JSObjectRef object);
  ~ScriptObject() override;

  JSObjectRef object() const noexcept { return object_; }
  Realm* realm() const noexcept { return realm_; }  // null once it has ended
  bool is_own_thread() const noexcept { return std::this_thread::get_id() == thread_; }
  void end_of_realm();
  // Of a realm that has not ended.
  bool is_global() const { return object_ == realm_->globals().object(); }
  // The one before it in its graveyard, under that one's lock or once it was taken from there.
  ScriptObject* next_dead() const noexcept { return next_dead_; }

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  HRESULT GetTypeInfoCount(UINT* count) override;
  HRESULT GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
  HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) override;
  HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* excepinfo, UINT* argerr) override;

 private:
  struct Name {
    JsString text;
    bool is_lexical;  // of a top-level let, const or class
  };

  void on_last_release() override;
  HRESULT check_callable() const;
  DISPID id_of(const std::u16string& key, Name name);
  // Where these leave an exception of the script, it says how the call failed, and not what they answer.
  HRESULT dispatch(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, JSValueRef* exception);
  HRESULT get_indexed(JSValueRef value, const RootedValues& arguments, VARIANT* result, JSValueRef* exception);
  HRESULT put_default(const RootedValues& arguments, JSValueRef* exception);
  HRESULT call_default(WORD flags, const RootedValues& arguments, DISPPARAMS* params, VARIANT* result,
                       JSValueRef* exception);
  HRESULT dispatch_instance(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, JSValueRef* exception);
  bool is_known(DISPID id) const { return id >= 1 && static_cast<std::size_t>(id) <= names_.size(); }
  const Name& name_of(DISPID id) const { return names_[static_cast<std::size_t>(id) - 1]; }
  HRESULT enumerate(VARIANT* result, JSValueRef* exception);
  HRESULT put(const Name& name, const RootedValues& arguments, JSValueRef* exception);
  HRESULT call(JSObjectRef function, JSObjectRef self, const RootedValues& arguments, DISPPARAMS* params,
               VARIANT* result, JSValueRef* exception);
  HRESULT deliver(JSValueRef value, VARIANT* result, JSValueRef* exception);
  bool has_name(const JsString& name, bool* is_lexical);
  JSValueRef read(const Name& name, JSValueRef* exception);

  Realm* realm_;
  JSObjectRef object_;
  std::thread::id thread_ = std::this_thread::get_id();
  std::shared_ptr<Graveyard> graveyard_;
  ScriptObject* next_dead_ = nullptr;
  std::deque<Name> names_;  // identifier 1 is the first; names stay where they are while a call adds more
  std::unordered_map<std::u16string, DISPID> ids_;
};

// The wrapper behind a pointer, null when it is another object. Not counted.
ScriptObject* script_object_behind(IUnknown* object) noexcept;

// Whether the object is a wrapper of a script's object, which does not outlive its realm: a store that
// outlives requests refuses it.
inline bool is_script_object(IUnknown* object) noexcept { return script_object_behind(object) != nullptr; }

}  // namespace zelto::script

KORLIB_IID(zelto::script::IScriptObject, "C5EBDECB-8F1F-457F-8847-3EB740E52D13");
