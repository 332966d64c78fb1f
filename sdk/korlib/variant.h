// VARIANT, the value that scripts and objects exchange, and the functions over it.
//
// A VARIANT owns what it holds unless VT_BYREF is set; it has no destructor, so that it can lie in
// unions, arrays and argument blocks. Whoever declares one clears it, or uses CComVariant
// (comvariant.h). The host supplies the functions.
#pragma once

#include <korlib/bstr.h>
#include <korlib/hresult.h>
#include <korlib/safearray.h>
#include <korlib/types.h>

struct IUnknown;
struct IDispatch;
struct VARIANT;
class CComVariant;

// The types of a value. The number is what scripts see as VarType, and what interfaces pass as VARTYPE.
//
// VT_ARRAY with an element type is a SAFEARRAY of it. VT_BYREF with a type is a reference to a value of that
// type, which belongs to somebody else; VT_BYREF | VT_VARIANT refers to a whole VARIANT, as an argument does
// that the callee may write to.
enum VARENUM : VARTYPE {
  // No value, and the value "none" of a database.
  VT_EMPTY = 0,
  VT_NULL = 1,
  // Numbers. VT_CY counts ten-thousandths.
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  // A DATE, a string, an object that answers to late-bound calls, and a result code.
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  // A VARIANT_BOOL, a whole VARIANT, and an object that may know no late-bound calls.
  VT_BOOL = 11,
  VT_VARIANT = 12,  // only with VT_BYREF or VT_ARRAY
  VT_UNKNOWN = 13,
  // Integers by size. VT_INT and VT_UINT have 32 bits.
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  // Flags, and the bits without them.
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
  VT_TYPEMASK = 0x0FFF,
};

extern "C" {
// Makes `v` VT_EMPTY without looking at what it held: for memory that does not hold a value yet.
KORLIB_API void VariantInit(VARIANT* v);
// Frees what `v` owns and makes it VT_EMPTY: strings and arrays are freed, objects released, references left
// alone. DISP_E_ARRAYISLOCKED leaves `v` as it was; a type that does not exist is DISP_E_BADVARTYPE.
KORLIB_API HRESULT VariantClear(VARIANT* v);
// Clears `target`, then copies deeply: strings and arrays are duplicated, interfaces counted. VT_BYREF values
// are copied as references. `target` must hold a value, VT_EMPTY at least. E_OUTOFMEMORY leaves it VT_EMPTY.
KORLIB_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
// As VariantCopy, but a VT_BYREF source is followed to the value, so that the copy outlives what it was taken
// from.
KORLIB_API HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source);
// Converts, also in place (target == source). References are followed, and an object is asked for its default
// member. `flags` is 0.
//
// DISP_E_TYPEMISMATCH for text or objects without that form, DISP_E_OVERFLOW for numbers out of range; on
// failure an in-place target keeps its value.
//
// A boolean's text is "True" or "False". Integers of one size, signed and not, keep their bits. VT_EMPTY and
// VT_NULL drop the value of every plain type and of objects; from VT_NULL to VT_EMPTY, and from VT_ERROR and
// arrays to either, is DISP_E_TYPEMISMATCH.
KORLIB_API HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE vt);
// Compares two values as a script does: numbers by value, text by its characters, or without letter case with
// NORM_IGNORECASE. VARCMP_LT, VARCMP_EQ, VARCMP_GT, VARCMP_NULL when either is VT_NULL, or a failure. Two of
// VT_ERROR are compared by their codes. The answers are all successes: compare with the constant.
KORLIB_API HRESULT VarCmp(const VARIANT* left, const VARIANT* right, LCID lcid, ULONG flags);
}

// What VarCmp answers, and its one flag.
inline constexpr HRESULT VARCMP_LT = 0;
inline constexpr HRESULT VARCMP_EQ = 1;
inline constexpr HRESULT VARCMP_GT = 2;
inline constexpr HRESULT VARCMP_NULL = 3;
inline constexpr ULONG NORM_IGNORECASE = 1;

// A value: its type, and the field of the union that the type chooses. Host and component, built apart, read it in
// memory, so nothing may be added.
//
// As an argument by value it is bits that the caller owns: a callee copies what it keeps. As an out-argument it
// is overwritten without a look at its old bits, and then the caller's to clear.
struct VARIANT {
  VARTYPE vt;
  // Neither read nor kept. They place the value at eight bytes.
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    // Values: VT_I8 … VT_DATE by name; VT_BOOL is boolVal, VT_ERROR scode. llVal is all eight bytes.
    LONGLONG llVal;
    ULONGLONG ullVal;
    signed char cVal;
    BYTE bVal;
    // VT_I2 and VT_UI2.
    SHORT iVal;
    USHORT uiVal;
    // VT_I4, VT_UI4, VT_INT and VT_UINT.
    LONG lVal;
    ULONG ulVal;
    INT intVal;
    UINT uintVal;
    // VT_R4 and VT_R8.
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    // VT_CY and VT_DATE.
    CY cyVal;
    DATE date;
    // What a value owns: a string, an object, an array. Null is legal in all of them.
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    // With VT_BYREF: where the value is. byref is the same address without a type.
    signed char* pcVal;
    BYTE* pbVal;
    SHORT* piVal;
    USHORT* puiVal;
    LONG* plVal;
    ULONG* pulVal;
    LONGLONG* pllVal;
    ULONGLONG* pullVal;
    float* pfltVal;
    double* pdblVal;
    VARIANT_BOOL* pboolVal;
    SCODE* pscode;
    CY* pcyVal;
    DATE* pdate;
    BSTR* pbstrVal;
    IUnknown** ppunkVal;
    IDispatch** ppdispVal;
    // VT_BYREF | VT_ARRAY with an element type, VT_BYREF | VT_VARIANT, and any reference without its type.
    SAFEARRAY** pparray;
    VARIANT* pvarVal;
    void* byref;
  };

  VARIANT() = default;                // indeterminate, as in an argument block
  VARIANT(const VARIANT&) = default;  // the bits: how an argument passed by value arrives; owns nothing

  // The operations below are called through the symbol table; a host that exports its own wins.

  // Takes the source's type and value; the source becomes VT_EMPTY. Nothing is copied or freed.
  KORLIB_API VARIANT(VARIANT&& source) noexcept;
  // An owner that is about to go would leave its value with a VARIANT that frees nothing: name it first.
  VARIANT(CComVariant&& owner) = delete;
  // A deep copy; assigning an object to itself does nothing.
  KORLIB_API VARIANT& operator=(const VARIANT& source);
  // Clears, then holds a copy of the text; a null BSTR for null.
  KORLIB_API VARIANT& operator=(const wchar_t* text);
};
static_assert(sizeof(VARIANT) == 16, "one size for host and component");

// An argument: a VARIANT that starts out empty. It frees nothing.
struct VARIANTARG : VARIANT {
  KORLIB_API VARIANTARG();
};

// A VARIANT that starts out empty and clears itself.
struct _variant_t : VARIANT {
  KORLIB_API _variant_t();
  KORLIB_API ~_variant_t();
  _variant_t(const _variant_t&) = delete;
  _variant_t& operator=(const _variant_t&) = delete;
};
