// Calls that components make of what a VBScript program has handed to them.
#pragma once

#include <korlib/dispatch.h>

#include "script/jsc.h"
#include "script/rooted_values.h"

namespace zelto::script {

class Realm;

namespace vbscript {

// A call of a function. Arguments that are references to a VARIANT are by reference, where the function assigns to its
// parameter: they are written to afterwards. Null with an exception.
JSValueRef call(Realm& realm, JSObjectRef function, JSObjectRef self, const DISPPARAMS* params, JSValueRef* exception);

// Whether the object is an instance of a class, whose members have other rules than objects of JavaScript have.
bool is_instance(Realm& realm, JSObjectRef object);
// Its member, in any letter case.
bool has_member(Realm& realm, JSObjectRef object, JSValueRef name);
// What Invoke does with the member of that name, or the default member where it is undefined. *value is what a call or
// a read gives.
HRESULT invoke(Realm& realm, JSObjectRef object, JSValueRef name, WORD flags, const DISPPARAMS* params,
               JSValueRef* value, JSValueRef* exception);

}  // namespace vbscript
}  // namespace zelto::script
