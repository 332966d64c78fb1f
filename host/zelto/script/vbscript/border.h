// Values of VBScript across the border: each kind has its type there.
//
//   Integer, Long, Double      VT_I2, VT_I4, VT_R8; other numbers of the host's come as one of these
//   Byte, Single, Currency,    VT_UI1, VT_R4, VT_CY, VT_DATE
//   Date
//   Empty, Null, Nothing       VT_EMPTY, VT_NULL, VT_DISPATCH of null
//   an omitted argument        VT_ERROR, DISP_E_PARAMNOTFOUND
//   an array                   VT_ARRAY | VT_VARIANT with all its dimensions, whose lowest index is 0 here
//   an odd number of bytes     VT_ARRAY | VT_UI1
//
// The rest crosses as values.h says.
#pragma once

#include <korlib/comvariant.h>

#include "script/jsc.h"

namespace zelto::script {

class Realm;
class Values;

namespace vbscript {

// A failure is left in *exception, and answered with false or null. *out is a value that is cleared first.
bool to_variant(Realm& realm, JSValueRef value, VARIANT* out, JSValueRef* exception);
JSValueRef to_script(Realm& realm, const VARIANT& value, JSValueRef* exception);

// Of an object, where it is one of the kinds above: true, with the value or an exception.
bool box_to_variant(Realm& realm, JSValueRef object, VARIANT* out, JSValueRef* exception);

}  // namespace vbscript
}  // namespace zelto::script
