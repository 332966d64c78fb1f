// The VARIANT operations that the component carries. The test's own host exports the same, and its
// calls of them go there; these are reached by their linker names.
#include <cstring>
#include <cwchar>

#include <korlib/comvariant.h>

#include "mirt/compat/fallbacks.h"
#include "support/fake.h"

namespace test {
namespace {

class VariantFallbacks : public Fallbacks {
 protected:
  void move_construct(VARIANT* target, VARIANT* source) {
    fallback<void(VARIANT*, VARIANT*)>("_ZN7VARIANTC1EOS_")(target, source);
  }
  VARIANT* assign(VARIANT* target, const VARIANT* source) {
    return fallback<VARIANT*(VARIANT*, const VARIANT*)>("_ZN7VARIANTaSERKS_")(target, source);
  }
  VARIANT* assign(VARIANT* target, const wchar_t* text) {
    return fallback<VARIANT*(VARIANT*, const wchar_t*)>("_ZN7VARIANTaSEPKw")(target, text);
  }
};

TEST_F(VariantFallbacks, MovingTakesTheValueOver) {
  CComVariant source(L"text");
  const BSTR text = source.bstrVal;
  VARIANT target;
  std::memset(static_cast<void*>(&target), 0xA5, sizeof target);
  move_construct(&target, &source);
  EXPECT_EQ(VT_EMPTY, source.vt);
  EXPECT_EQ(VT_BSTR, target.vt);
  EXPECT_EQ(text, target.bstrVal);
  VariantClear(&target);
}

TEST_F(VariantFallbacks, AssigningCopiesAndFrees) {
  CComPtr<FakeScript> object = FakeScript::make();
  CComVariant target = value_of(static_cast<IDispatch*>(object.get()));
  EXPECT_EQ(2u, object->references());
  const CComVariant source(L"text");
  EXPECT_EQ(static_cast<VARIANT*>(&target), assign(&target, &source));
  EXPECT_EQ(1u, object->references());
  ASSERT_EQ(VT_BSTR, target.vt);
  EXPECT_NE(source.bstrVal, target.bstrVal);
  EXPECT_STREQ(L"text", target.bstrVal);
  const BSTR kept = target.bstrVal;
  EXPECT_EQ(static_cast<VARIANT*>(&target), assign(&target, &target));
  EXPECT_EQ(kept, target.bstrVal);
}

TEST_F(VariantFallbacks, AssigningTextMakesAString) {
  CComPtr<FakeScript> object = FakeScript::make();
  CComVariant target = value_of(static_cast<IDispatch*>(object.get()));
  assign(&target, L"one");
  EXPECT_EQ(1u, object->references());
  ASSERT_EQ(VT_BSTR, target.vt);
  EXPECT_STREQ(L"one", target.bstrVal);
  assign(&target, target.bstrVal + 1);  // of itself
  EXPECT_STREQ(L"ne", target.bstrVal);
  assign(&target, static_cast<const wchar_t*>(nullptr));
  EXPECT_EQ(VT_BSTR, target.vt);
  EXPECT_EQ(nullptr, target.bstrVal);
}

TEST_F(VariantFallbacks, SelfClearingVariantsStartEmpty) {
  alignas(VARIANT) unsigned char memory[sizeof(VARIANT)];
  auto* variant = reinterpret_cast<VARIANT*>(memory);
  for (const char* constructor : {"_ZN10VARIANTARGC1Ev", "_ZN10_variant_tC1Ev"}) {
    std::memset(memory, 0xA5, sizeof memory);
    fallback<void(VARIANT*)>(constructor)(variant);
    EXPECT_EQ(VT_EMPTY, variant->vt);
  }
  CComPtr<FakeScript> object = FakeScript::make();
  object->AddRef();
  variant->vt = VT_DISPATCH;
  variant->pdispVal = object.get();
  fallback<void(VARIANT*)>("_ZN10_variant_tD1Ev")(variant);
  EXPECT_EQ(1u, object->references());
}

}  // namespace
}  // namespace test
