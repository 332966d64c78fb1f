#include "script/callback.h"

#include <korlib_host/errors.h>

#include "script/text.h"

namespace zelto::script {

// Without memory of the host's own, which may be what was short.
void raise_caught(JSContextRef ctx, JSValueRef* exception) noexcept {
  const HRESULT hr = korlib::hresult_from_exception(L"Zelto");
  SetErrorInfo(0, nullptr);  // the script has the failure from here on
  if (!exception) return;
  const JsString words(hr == E_OUTOFMEMORY ? "Out of memory (0x8007000E)" : "Unexpected failure (0x8000FFFF)");
  JSValueRef text = JSValueMakeString(ctx, words.get());
  JSObjectRef error = JSObjectMakeError(ctx, 1, &text, nullptr);
  if (error) set_hidden(ctx, error, "number", JSValueMakeNumber(ctx, hr == E_OUTOFMEMORY ? hr : E_UNEXPECTED));
  *exception = error;
}

}  // namespace zelto::script
