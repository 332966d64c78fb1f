// Calls as a script makes them: by name, with arguments in the order of writing.
//
//   EXPECT_EQ(L"a", text_of(call(utility, L"Trim", L" a ")));
//   const Answer answer = call(page, L"Process");
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

namespace test {

// Values as scripts hold them.
inline CComVariant value_of(const CComVariant& value) { return value; }
inline CComVariant value_of(const wchar_t* text) { return CComVariant(text); }
inline CComVariant value_of(const std::wstring& text) { return CComVariant(std::wstring_view(text)); }
inline CComVariant value_of(std::wstring_view text) { return CComVariant(text); }
inline CComVariant value_of(int number) { return CComVariant(LONG{number}); }
inline CComVariant value_of(double number) { return CComVariant(number); }
inline CComVariant value_of(bool truth) { return CComVariant(truth); }
inline CComVariant value_of(IDispatch* object) { return CComVariant(object); }
inline CComVariant value_of(IUnknown* object) { return CComVariant(object); }
template <class Interface>
CComVariant value_of(const CComPtr<Interface>& object) {
  return value_of(object.get());
}
CComVariant value_of(const std::vector<std::uint8_t>& bytes);    // VT_ARRAY | VT_UI1
CComVariant value_of(const std::vector<CComVariant>& elements);  // VT_ARRAY | VT_VARIANT
inline CComVariant null_value() {
  CComVariant null;
  null.vt = VT_NULL;
  return null;
}
// A reference to a variable of the script, which must outlive the call.
inline CComVariant by_reference(VARIANT* variable) {
  CComVariant reference;
  reference.vt = VT_BYREF | VT_VARIANT;
  reference.pvarVal = variable;
  return reference;
}

// What came of a call: its code, its value, and the text of the error object that it left.
struct Answer {
  HRESULT hr = E_UNEXPECTED;
  CComVariant value;
  std::wstring source;
  std::wstring description;
};

// The calls. A name that the object does not know is the answer DISP_E_UNKNOWNNAME. The result variant
// is poisoned before the call, and any error object of the thread is cleared.
Answer invoke(IDispatch* object, DISPID id, WORD flags, const std::vector<CComVariant>& arguments);
Answer invoke(IDispatch* object, const wchar_t* name, WORD flags, const std::vector<CComVariant>& arguments);
DISPID id_of(IDispatch* object, const wchar_t* name);  // DISPID_UNKNOWN for none

template <class... Arguments>
Answer call(IDispatch* object, const wchar_t* name, const Arguments&... arguments) {
  return invoke(object, name, DISPATCH_METHOD, {value_of(arguments)...});
}
template <class... Arguments>
Answer get(IDispatch* object, const wchar_t* name, const Arguments&... arguments) {
  return invoke(object, name, DISPATCH_PROPERTYGET, {value_of(arguments)...});
}
// The value last, after the property's arguments.
template <class... Arguments>
Answer put(IDispatch* object, const wchar_t* name, const Arguments&... arguments) {
  return invoke(object, name, DISPATCH_PROPERTYPUT, {value_of(arguments)...});
}
template <class... Arguments>
Answer putref(IDispatch* object, const wchar_t* name, const Arguments&... arguments) {
  return invoke(object, name, DISPATCH_PROPERTYPUTREF, {value_of(arguments)...});
}

// Views of an answer's value; a value of another type gives a text that says so, or an empty result.
std::wstring text_of(const Answer& answer);  // of a string, null included; "<code 80004005>" for a failure
std::vector<std::uint8_t> bytes_of(const Answer& answer);
bool is_true(const Answer& answer);  // VT_BOOL and VARIANT_TRUE
CComPtr<IDispatch> object_of(const Answer& answer);

// The thread's error object, taken; empty when there is none.
struct ErrorText {
  std::wstring source;
  std::wstring description;
};
ErrorText take_error();

}  // namespace test

// Failures in test output, readable.
void PrintTo(const CComVariant& value, std::ostream* out);
