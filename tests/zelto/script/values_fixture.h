// Values that components hand to scripts.
#pragma once

#include <string>
#include <string_view>

#include "zelto/script/script_fixture.h"

namespace test {

class ValuesTest : public ScriptTest {
 protected:
  // What the expression makes of `v`, which a component hands to the script.
  std::string text_of(const VARIANT& v, std::wstring_view expression) {
    must_run(L"o.Keep((v, p) => String(" + std::wstring(expression) + L"))");
    CComVariant reversed[] = {CComVariant(static_cast<IDispatch*>(other.get())), CComVariant(v)};
    DISPPARAMS params{reversed, nullptr, 2, 0};
    CComVariant result;
    EXPECT_EQ(S_OK, probe->kept.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr,
                                                 nullptr));
    probe->kept.reset();
    return result.vt == VT_BSTR ? narrow(korlib::view_of(result.bstrVal)) : "no text";
  }
};

inline VARIANT made_double(VARTYPE type, double number) {
  VARIANT value{};
  value.vt = type;
  value.dblVal = number;
  return value;
}

}  // namespace test
