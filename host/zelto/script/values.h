// Values between script and objects. They cross by these rules:
//
//   undefined            as a value VT_EMPTY. As an argument it is omitted (VT_ERROR, DISP_E_PARAMNOTFOUND) where
//                        the parameter is optional, and VT_EMPTY where it is required (object_calls.h)
//   null, boolean        VT_NULL, VT_BOOL
//   string               VT_BSTR; UTF-16 to UTF-32, lone surrogates become U+FFFD
//   number               VT_I4 when integral and in range, else VT_R8; every number type comes back as one
//   bigint               VT_I8; a 64-bit integer beyond Number.MAX_SAFE_INTEGER comes back as one, exactly
//   Date                 VT_DATE, in local time
//   ArrayBuffer, bytes   VT_ARRAY | VT_UI1, which comes back as Uint8Array
//   array                VT_ARRAY | VT_VARIANT by value, nested arrays likewise
//   object, function     VT_DISPATCH: a wrapper, the same one each time while somebody holds it
//   automation object    VT_DISPATCH: the object itself
#pragma once

#include <korlib/comvariant.h>

#include "script/errors.h"
#include "script/repeated_texts.h"
#include "script/wrappers.h"

namespace zelto::script {

// Those of one realm. A failure is left in *exception, which is not null then, and answered with false or null.
class Values {
 public:
  Values(JSContextRef context, const HostClasses& classes, RepeatedTexts& texts, Errors& errors, Wrappers& wrappers)
      : context_(context), classes_(classes), texts_(texts), errors_(errors), wrappers_(wrappers) {}

  JSContextRef context() const noexcept { return context_; }
  Errors& errors() const noexcept { return errors_; }

  RepeatedTexts& texts() const noexcept { return texts_; }
  // *out is a value that is cleared first.
  bool to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception);
  JSValueRef to_script(const VARIANT& value, JSValueRef* exception);

 private:
  bool object_to_variant(JSObjectRef object, VARIANT* out, JSValueRef* exception);
  bool date_to_variant(JSObjectRef date, VARIANT* out, JSValueRef* exception);
  bool bigint_to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception);
  bool string_to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception);
  bool give_text(BSTR owned, VARIANT* out, JSValueRef* exception);
  JSValueRef referenced_to_script(const VARIANT& value, JSValueRef* exception);
  JSValueRef number_to_script(const VARIANT& value, JSValueRef* exception);

  JSContextRef context_;
  const HostClasses& classes_;
  RepeatedTexts& texts_;
  Errors& errors_;
  Wrappers& wrappers_;
};

}  // namespace zelto::script
