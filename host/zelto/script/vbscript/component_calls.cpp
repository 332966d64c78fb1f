#include "script/vbscript/component_calls.h"

#include "script/realm.h"
#include "script/vbscript/border.h"
#include "script/vbscript/library.h"

namespace zelto::script::vbscript {
namespace {

constexpr VARTYPE kReference = VT_BYREF | VT_VARIANT;

bool is_reference(const VARIANT& argument) { return argument.vt == kReference && argument.pvarVal; }

// Converts what a component gave, behind what is there already.
bool add_arguments(Realm& realm, const DISPPARAMS* params, bool lends, RootedValues* values, JSValueRef* exception) {
  for (const VARIANT& argument : CallArguments::in_order(params)) {
    JSValueRef value = to_script(realm, argument, exception);
    if (value && lends && is_reference(argument)) value = realm.world().library()->lend(value, exception);
    if (!value) return false;
    values->push_back(value);
  }
  return true;
}

// What the function has assigned to its parameters.
bool write_back(Realm& realm, const DISPPARAMS* params, const JSValueRef* values, JSValueRef* exception) {
  for (const VARIANT& argument : CallArguments::in_order(params)) {
    JSValueRef lent = *values++;
    if (!is_reference(argument)) continue;
    JSValueRef now = property(realm.context(), object_of(lent), "v");
    if (JSValueIsStrictEqual(realm.context(), now, property(realm.context(), object_of(lent), "given"))) continue;
    CComVariant value;
    if (!to_variant(realm, now, &value, exception)) return false;
    VariantClear(argument.pvarVal);
    value.detach_to(argument.pvarVal);
  }
  return true;
}

JSValueRef run(Realm& realm, JSObjectRef function, const RootedValues& values, JSValueRef* exception) {
  JSValueRef value =
      JSObjectCallAsFunction(realm.context(), function, nullptr, values.size(), values.data(), exception);
  return *exception ? nullptr : value;
}

std::size_t count_of(const DISPPARAMS* params) { return params ? params->cArgs : 0; }

}  // namespace

JSValueRef call(Realm& realm, JSObjectRef function, JSObjectRef self, const DISPPARAMS* params, JSValueRef* exception) {
  constexpr std::size_t kInFront = 2;
  RootedValues values(realm.context(), kInFront + count_of(params));
  values.push_back(function);
  values.push_back(self ? static_cast<JSValueRef>(self) : JSValueMakeUndefined(realm.context()));
  if (!add_arguments(realm, params, true, &values, exception)) return nullptr;
  JSValueRef value = run(realm, realm.world().library()->invoke(), values, exception);
  return value && write_back(realm, params, values.data() + kInFront, exception) ? value : nullptr;
}

bool is_instance(Realm& realm, JSObjectRef object) {
  if (!realm.prelude().speaks_vbscript()) return false;
  JSValueRef none = string_value(realm.context(), L"");
  return realm.world().library()->member(object, none) != Library::Member::not_an_instance;
}

bool has_member(Realm& realm, JSObjectRef object, JSValueRef name) {
  const Library::Member member = realm.world().library()->member(object, name);
  return member == Library::Member::method || member == Library::Member::value;
}

HRESULT invoke(Realm& realm, JSObjectRef object, JSValueRef name, WORD flags, const DISPPARAMS* params,
               JSValueRef* value, JSValueRef* exception) {
  const Library& library = *realm.world().library();
  const bool puts = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  if (puts && count_of(params) == 0) return DISP_E_BADPARAMCOUNT;
  // Whoever reads a method learns to call it.
  const bool reads_only = flags == DISPATCH_PROPERTYGET;
  if (reads_only && JSValueIsString(realm.context(), name) && library.member(object, name) == Library::Member::method) {
    return DISP_E_MEMBERNOTFOUND;
  }
  constexpr std::size_t kInFront = 4;
  RootedValues values(realm.context(), kInFront + count_of(params));
  values.push_back(object);
  values.push_back(name);
  if (!puts) {
    if (!add_arguments(realm, params, true, &values, exception)) return E_FAIL;
    *value = run(realm, library.get(), values, exception);
    return *value && write_back(realm, params, values.data() + 2, exception) ? S_OK : E_FAIL;
  }
  RootedValues given(realm.context(), count_of(params));
  if (!add_arguments(realm, params, false, &given, exception)) return E_FAIL;
  values.push_back(JSValueMakeBoolean(realm.context(), (flags & DISPATCH_PROPERTYPUTREF) != 0));
  values.push_back(given[given.size() - 1]);
  for (std::size_t i = 0; i + 1 < given.size(); ++i) values.push_back(given[i]);
  return run(realm, library.put(), values, exception) ? S_OK : E_FAIL;
}

}  // namespace zelto::script::vbscript
