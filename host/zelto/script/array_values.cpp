#include "script/array_values.h"

#include <cstring>
#include <vector>

#include "script/text.h"

namespace zelto::script {
namespace {

// A script can name a length of four billion without having the elements.
constexpr double kMostElements = 1 << 24;
constexpr int kDeepest = 200;  // an array may contain itself

thread_local int t_depth = 0;

class Nesting {
 public:
  Nesting() { ++t_depth; }
  ~Nesting() { --t_depth; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  // Raises what forbids this level, if anything does.
  static bool is_allowed(Values& values, JSValueRef* exception) {
    if (t_depth > kDeepest) {
      values.errors().raise_text(L"The array is nested too deeply", E_INVALIDARG, exception);
    } else if (stack_is_low()) {
      values.errors().raise_out_of_stack(exception);
    }
    return !*exception;
  }
};

HRESULT read_element(SAFEARRAY* array, const LONG* indices, CComVariant* out) {
  if (array->vtElement == VT_VARIANT) return SafeArrayGetElement(array, indices, static_cast<VARIANT*>(out));
  VARIANT value{};
  RETURN_IF_FAILED(SafeArrayGetElement(array, indices, &value.llVal));
  value.vt = array->vtElement;
  out->attach(&value);
  return S_OK;
}

JSValueRef bytes_to_script(JSContextRef ctx, SAFEARRAY* array, JSValueRef* exception) {
  const std::size_t length = array->rgsabound[0].cElements;
  JSObjectRef bytes = JSObjectMakeTypedArray(ctx, kJSTypedArrayTypeUint8Array, length, exception);
  if (!bytes || *exception) return nullptr;
  void* data = JSObjectGetTypedArrayBytesPtr(ctx, bytes, exception);
  if (data && length > 0) std::memcpy(data, array->pvData, length);
  return *exception ? nullptr : bytes;
}

// Bounds are kept with the last dimension first.
const SAFEARRAYBOUND& bound_of(SAFEARRAY* array, UINT dim) { return array->rgsabound[array->cDims - dim]; }

JSValueRef dimension_to_script(Values& values, SAFEARRAY* array, UINT dim, std::vector<LONG>& indices,
                               JSValueRef* exception) {
  JSContextRef ctx = values.context();
  const SAFEARRAYBOUND& bound = bound_of(array, dim);
  JSObjectRef out = JSObjectMakeArray(ctx, 0, nullptr, exception);
  for (ULONG i = 0; out && i < bound.cElements; ++i) {
    indices[dim - 1] = static_cast<LONG>(static_cast<ULONG>(bound.lLbound) + i);
    JSValueRef value = nullptr;
    if (dim < indices.size()) {
      value = dimension_to_script(values, array, dim + 1, indices, exception);
    } else {
      CComVariant element;
      const HRESULT hr = read_element(array, indices.data(), &element);
      value = SUCCEEDED(hr) ? values.to_script(element, exception) : values.errors().raise(hr, {}, exception);
    }
    if (!value) return nullptr;
    JSObjectSetPropertyAtIndex(ctx, out, i, value, exception);
    if (*exception) return nullptr;
  }
  return out;
}

}  // namespace

bool array_to_variant(Values& values, JSObjectRef array, VARIANT* out, JSValueRef* exception) {
  JSContextRef ctx = values.context();
  const Nesting nesting;
  const double length = JSValueToNumber(ctx, property(ctx, array, "length"), exception);
  if (*exception) return false;
  if (!Nesting::is_allowed(values, exception)) return false;
  if (!(length <= kMostElements)) return values.errors().raise_text(L"The array is too long", E_INVALIDARG, exception);
  CComSafeArray elements(VT_VARIANT, static_cast<ULONG>(length));
  if (!elements) return values.errors().raise(E_OUTOFMEMORY, {}, exception);
  for (ULONG i = 0; i < elements.size(); ++i) {
    JSValueRef value = JSObjectGetPropertyAtIndex(ctx, array, i, exception);
    if (*exception || !values.to_variant(value, elements.data<VARIANT>() + i, exception)) return false;
  }
  elements.detach_to(out);
  return true;
}

bool bytes_to_variant(Values& values, JSObjectRef bytes, VARIANT* out, JSValueRef* exception) {
  JSContextRef ctx = values.context();
  const bool is_buffer = JSValueGetTypedArrayType(ctx, bytes, nullptr) == kJSTypedArrayTypeArrayBuffer;
  const std::size_t length = is_buffer ? JSObjectGetArrayBufferByteLength(ctx, bytes, exception)
                                       : JSObjectGetTypedArrayByteLength(ctx, bytes, exception);
  if (*exception) return false;
  CComSafeArray copy;
  if (length <= kMaxBstrBytes) copy = CComSafeArray(VT_UI1, static_cast<ULONG>(length));
  if (!copy) return values.errors().raise(E_OUTOFMEMORY, {}, exception);
  // The bytes of a view are those of its whole buffer.
  const std::size_t offset = is_buffer ? 0 : JSObjectGetTypedArrayByteOffset(ctx, bytes, exception);
  const void* data = is_buffer ? JSObjectGetArrayBufferBytesPtr(ctx, bytes, exception)
                               : JSObjectGetTypedArrayBytesPtr(ctx, bytes, exception);
  if (data && length > 0) std::memcpy(copy.data<BYTE>(), static_cast<const BYTE*>(data) + offset, length);
  copy.detach_to(out);
  return !*exception;
}

JSValueRef array_to_script(Values& values, SAFEARRAY* array, JSValueRef* exception) {
  const UINT dims = SafeArrayGetDim(array);
  if (dims == 0) return JSObjectMakeArray(values.context(), 0, nullptr, exception);
  if (dims == 1 && array->vtElement == VT_UI1) return bytes_to_script(values.context(), array, exception);
  const Nesting nesting;
  if (!Nesting::is_allowed(values, exception)) return nullptr;
  std::vector<LONG> indices(dims);
  return dimension_to_script(values, array, 1, indices, exception);
}

}  // namespace zelto::script
