#include "script/script_object.h"

#include <korlib_host/enumerator.h>
#include <korlib_host/errors.h>

#include "script/call_arguments.h"
#include "script/vbscript/component_calls.h"

namespace zelto::script {
namespace {

constexpr HRESULT kWrongThread = korlib::hresult(0x8001010E);

}  // namespace

ScriptObject::ScriptObject(Realm& realm, JSObjectRef object)
    : realm_(&realm), object_(object), graveyard_(realm.wrappers().graveyard()) {
  JSValueProtect(realm.context(), object_);
}

ScriptObject::~ScriptObject() { end_of_realm(); }

void ScriptObject::end_of_realm() {
  if (!realm_) return;
  JSValueUnprotect(realm_->context(), object_);
  realm_ = nullptr;
  object_ = nullptr;
}

HRESULT ScriptObject::QueryInterface(REFIID riid, void** ppv) {
  return korlib::query_list<IScriptObject, IDispatch, IUnknown>(this, riid, ppv);
}

void ScriptObject::on_last_release() {
  if (is_own_thread()) {
    if (realm_) realm_->wrappers().forget(this);
    delete this;
    return;
  }
  const std::shared_ptr<Graveyard> graveyard = graveyard_;
  const std::lock_guard lock(graveyard->lock);
  if (graveyard->closed) {
    delete this;
  } else {
    next_dead_ = std::exchange(graveyard->dead, this);
  }
}

HRESULT ScriptObject::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT ScriptObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  return DISP_E_BADINDEX;
}

HRESULT ScriptObject::check_callable() const {
  if (!is_own_thread()) {
    return korlib::raise(kWrongThread, L"Zelto", L"A script object can only be used in the request that made it");
  }
  if (!realm_) return korlib::raise(kDisconnected, L"Zelto", L"The page that made this script object has ended");
  if (realm_->engine().watchdog().is_running() && realm_->engine().watchdog().must_unwind()) return kPageStopped;
  return check_stack();
}

bool ScriptObject::has_name(const JsString& name, bool* is_lexical) {
  *is_lexical = false;
  if (is_global()) return realm_->globals().declares(name, is_lexical);
  if (!vbscript::is_instance(*realm_, object_)) return realm_->prelude().has_own_name(object_, name);
  return vbscript::has_member(*realm_, object_, JSValueMakeString(realm_->context(), name.get()));
}

HRESULT ScriptObject::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (!names || !ids || count == 0 || !names[0]) return E_INVALIDARG;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  RETURN_IF_FAILED(check_callable());
  return korlib::guarded(L"Zelto", [&]() -> HRESULT {
    const EngineLock lock(realm_->context());
    JsString text = realm_->engine().asked_names().of(names[0]);
    if (is_global()) realm_->globals().spell(text);
    bool is_lexical = false;
    if (!has_name(text, &is_lexical)) {
      realm_->errors().note_unknown(std::move(text), DISP_E_UNKNOWNNAME);
      return DISP_E_UNKNOWNNAME;
    }
    const std::u16string key(text.view());
    ids[0] = id_of(key, {std::move(text), is_lexical});
    return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
  });
}

DISPID ScriptObject::id_of(const std::u16string& key, Name name) {
  if (const auto known = ids_.find(key); known != ids_.end()) return known->second;
  names_.push_back(std::move(name));
  try {
    return ids_.emplace(key, static_cast<DISPID>(names_.size())).first->second;
  } catch (...) {
    names_.pop_back();
    throw;
  }
}

HRESULT ScriptObject::Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                             UINT*) {
  if (result) VariantInit(result);
  if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  RETURN_IF_FAILED(check_callable());
  const CComPtr<IDispatch> alive(this);
  Engine& engine = realm_->engine();
  const Engine::Run run(engine);
  SetErrorInfo(0, nullptr);  // words of a failure that the caller went on from
  const HRESULT hr = korlib::guarded(L"Zelto", [&] {
    JSValueRef exception = nullptr;
    const HRESULT answer = dispatch(id, flags, params, result, &exception);
    if (!exception && !engine.watchdog().is_unwinding()) realm_->calls().hand_text_over(&exception);
    return exception ? realm_->errors().failure_of(exception) : answer;
  });
  if (!engine.watchdog().is_unwinding()) return hr;
  if (result) VariantClear(result);
  return kPageStopped;
}

HRESULT ScriptObject::dispatch(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, JSValueRef* exception) {
  const EngineLock lock(realm_->context());
  if (id != DISPID_NEWENUM && vbscript::is_instance(*realm_, object_)) {
    return dispatch_instance(id, flags, params, result, exception);
  }
  const auto given = CallArguments::in_order(params);
  RootedValues arguments(realm_->context(), given.size());
  for (const VARIANT& argument : given) {
    JSValueRef value = realm_->values().to_script(argument, exception);
    if (!value) return E_FAIL;
    arguments.push_back(value);
  }
  const bool puts = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  if (id == DISPID_NEWENUM && !puts) return enumerate(result, exception);
  if (id == DISPID_VALUE) {
    return puts ? put_default(arguments, exception) : call_default(flags, arguments, params, result, exception);
  }
  if (!is_known(id)) return DISP_E_MEMBERNOTFOUND;
  const Name& name = name_of(id);
  if (puts) return put(name, arguments, exception);
  JSValueRef value = read(name, exception);
  if (*exception) return E_FAIL;
  if (realm_->engine().classes().is_function(realm_->context(), value)) {
    if (!(flags & DISPATCH_METHOD)) return DISP_E_MEMBERNOTFOUND;
    return call(object_of(value), object_, arguments, params, result, exception);
  }
  if (!(flags & DISPATCH_PROPERTYGET)) {
    return korlib::raise(DISP_E_MEMBERNOTFOUND, L"Zelto", L"'" + to_wide(name.text.view()) + L"' is not a function");
  }
  return arguments.empty() ? deliver(value, result, exception) : get_indexed(value, arguments, result, exception);
}

// The member's value, indexed: an automation object by its default member, an object of the script by name.
HRESULT ScriptObject::get_indexed(JSValueRef value, const RootedValues& arguments, VARIANT* result,
                                  JSValueRef* exception) {
  JSContextRef ctx = realm_->context();
  if (!JSValueIsObject(ctx, value)) return DISP_E_BADPARAMCOUNT;
  auto* object = object_of(value);
  if (realm_->engine().classes().is_automation_object(ctx, value)) {
    return call(object, nullptr, arguments, nullptr, result, exception);
  }
  if (arguments.size() > 1) return DISP_E_BADPARAMCOUNT;
  const JsString name(JSValueToStringCopy(ctx, arguments[0], exception));
  if (!name.get()) return E_FAIL;
  if (!realm_->prelude().has_own_name(object, name)) return DISP_E_MEMBERNOTFOUND;
  value = JSObjectGetProperty(ctx, object, name.get(), exception);
  return *exception ? E_FAIL : deliver(value, result, exception);
}

JSValueRef ScriptObject::read(const Name& name, JSValueRef* exception) {
  if (name.is_lexical) return realm_->globals().lexical_value(name.text, exception);
  return JSObjectGetProperty(realm_->context(), object_, name.text.get(), exception);
}

HRESULT ScriptObject::put(const Name& name, const RootedValues& arguments, JSValueRef* exception) {
  if (arguments.size() != 1) return DISP_E_BADPARAMCOUNT;
  if (name.is_lexical) {
    realm_->globals().set_lexical_value(name.text, arguments[0], exception);
  } else {
    JSObjectSetProperty(realm_->context(), object_, name.text.get(), arguments[0], kJSPropertyAttributeNone, exception);
  }
  return S_OK;
}

// o(key) = value makes a name where there is none, but for those that mean something else on every object.
HRESULT ScriptObject::put_default(const RootedValues& arguments, JSValueRef* exception) {
  if (arguments.size() != 2) return DISP_E_BADPARAMCOUNT;
  if (is_global()) realm_->show_global();  // it may be a name of the page's
  JSContextRef ctx = realm_->context();
  const JsString name(JSValueToStringCopy(ctx, arguments[0], exception));
  if (!name.get()) return E_FAIL;
  if (JSObjectHasProperty(ctx, object_, name.get()) && !realm_->prelude().has_own_name(object_, name)) {
    return DISP_E_MEMBERNOTFOUND;
  }
  JSObjectSetProperty(ctx, object_, name.get(), arguments[1], kJSPropertyAttributeNone, exception);
  return S_OK;
}

// An instance of a class of VBScript's.
HRESULT ScriptObject::dispatch_instance(DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                        JSValueRef* exception) {
  if (id != DISPID_VALUE && !is_known(id)) return DISP_E_MEMBERNOTFOUND;
  JSContextRef ctx = realm_->context();
  JSValueRef name = id == DISPID_VALUE ? JSValueMakeUndefined(ctx) : JSValueMakeString(ctx, name_of(id).text.get());
  JSValueRef value = nullptr;
  RETURN_IF_FAILED(vbscript::invoke(*realm_, object_, name, flags, params, &value, exception));
  return value ? deliver(value, result, exception) : S_OK;
}

HRESULT ScriptObject::call_default(WORD flags, const RootedValues& arguments, DISPPARAMS* params, VARIANT* result,
                                   JSValueRef* exception) {
  JSContextRef ctx = realm_->context();
  if ((flags & DISPATCH_METHOD) && JSObjectIsFunction(ctx, object_)) {
    return call(object_, nullptr, arguments, params, result, exception);
  }
  if (arguments.empty()) {
    JSValueRef text = to_string_value(ctx, object_, exception);
    return text ? deliver(text, result, exception) : E_FAIL;
  }
  if (arguments.size() > 1) return DISP_E_BADPARAMCOUNT;
  Name name{JsString(JSValueToStringCopy(ctx, arguments[0], exception)), false};
  if (!name.text.get()) return E_FAIL;
  if (!has_name(name.text, &name.is_lexical)) {
    realm_->errors().note_unknown(name.text.shared(), DISP_E_MEMBERNOTFOUND);
    return DISP_E_MEMBERNOTFOUND;
  }
  JSValueRef value = read(name, exception);
  if (*exception) return E_FAIL;
  if (realm_->engine().classes().is_function(ctx, value)) return DISP_E_MEMBERNOTFOUND;
  return deliver(value, result, exception);
}

// `params` are the arguments as the component gave them; null where the function is none of the script's.
HRESULT ScriptObject::call(JSObjectRef function, JSObjectRef self, const RootedValues& arguments, DISPPARAMS* params,
                           VARIANT* result, JSValueRef* exception) {
  JSValueRef value =
      params && realm_->prelude().speaks_vbscript()
          ? vbscript::call(*realm_, function, self, params, exception)
          : JSObjectCallAsFunction(realm_->context(), function, self, arguments.size(), arguments.data(), exception);
  return value && !*exception ? deliver(value, result, exception) : E_FAIL;
}

HRESULT ScriptObject::deliver(JSValueRef value, VARIANT* result, JSValueRef* exception) {
  if (!result) return S_OK;
  CComVariant converted;
  if (!realm_->values().to_variant(value, &converted, exception)) return E_FAIL;
  converted.detach_to(result);
  return S_OK;
}

HRESULT ScriptObject::enumerate(VARIANT* result, JSValueRef* exception) {
  if (!result) return E_POINTER;
  if (is_global()) realm_->show_global();
  CComVariant array;
  JSValueRef values = realm_->prelude().items_of(object_, exception);
  if (!values || !realm_->values().to_variant(values, &array, exception)) return E_FAIL;
  std::vector<CComVariant> items;
  if (array.vt == (VT_ARRAY | VT_VARIANT)) {
    auto* first = static_cast<VARIANT*>(array.parray->pvData);
    items.resize(array.parray->rgsabound[0].cElements);
    for (CComVariant& item : items) item.attach(first++);
  }
  CComPtr<IUnknown> enumerator;
  RETURN_IF_FAILED(korlib::make_enumerator(std::move(items), enumerator.put()));
  CComVariant(enumerator.get()).detach_to(result);
  return S_OK;
}

ScriptObject* script_object_behind(IUnknown* object) noexcept {
  CComPtr<IScriptObject> found;
  if (!object || FAILED(object->QueryInterface(korlib::iid_of<IScriptObject>, found.put_void()))) return nullptr;
  return static_cast<ScriptObject*>(found.get());
}

}  // namespace zelto::script
