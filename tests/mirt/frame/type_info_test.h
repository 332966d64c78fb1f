// Calls through the component's type information, as its objects forward them.
#pragma once

#include <korlib/typeinfo.h>

#include "mirt/frame/recording_objects.h"
#include "support/fake.h"
#include "support/module.h"

namespace test {

// The kinds of call.
inline constexpr WORD M = DISPATCH_METHOD;
inline constexpr WORD G = DISPATCH_PROPERTYGET;
inline constexpr WORD P = DISPATCH_PROPERTYPUT;
inline constexpr WORD R = DISPATCH_PROPERTYPUTREF;

class TypeInfoTest : public ModuleTest {
 protected:
  // What the module's global of that name points at.
  ITypeInfo* info(const char* name) { return *module_.symbol<ITypeInfo*>(name); }

  // Calls with arguments in the order of writing; the result is poisoned before.
  Answer invoke(ITypeInfo* type, void* object, DISPID id, WORD flags, std::vector<CComVariant> arguments) {
    std::vector<VARIANT> block(arguments.rbegin(), arguments.rend());
    DISPPARAMS params{block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    Answer answer;
    VARIANT result;
    result.vt = 0xA5A5;
    answer.hr = type->Invoke(object, id, flags, &params, &result, nullptr, nullptr);
    EXPECT_NE(0xA5A5, result.vt);
    answer.value.attach(&result);
    return answer;
  }

  // DISPID_UNKNOWN for a name that is refused.
  static DISPID id_in(ITypeInfo* type, const std::wstring& name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name.c_str())};
    MEMBERID id = 12345;
    const HRESULT hr = type->GetIDsOfNames(names, 1, &id);
    EXPECT_EQ(id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK, hr);
    return id;
  }

  CComPtr<FakeScript> script_ = FakeScript::make();
};

}  // namespace test
