// Objects where a plain value is asked for.
#include <gtest/gtest.h>

#include <memory>

#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

using namespace values;

HRESULT change(const CComVariant& source, VARTYPE vt, CComVariant* target) {
  return VariantChangeType(target, &source, 0, vt);
}

CComVariant object_value(const CComPtr<DefaultObject>& object) {
  return CComVariant(static_cast<IDispatch*>(object.get()));
}
CComVariant unknown_value(IUnknown* object) { return CComVariant(object); }

class DefaultMember : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(0, DefaultObject::alive()); }
};

TEST_F(DefaultMember, IsReadAndConvertedFurther) {
  const auto object = DefaultObject::holding(r8(2.5));
  CComVariant target;
  EXPECT_EQ(S_OK, change(object_value(object), VT_R8, &target));
  EXPECT_PRED2(same, target, r8(2.5));
  EXPECT_EQ(S_OK, change(object_value(object), VT_BSTR, &target));
  EXPECT_PRED2(same, target, text(L"2.5"));
  EXPECT_EQ(S_OK, change(object_value(object), VT_I4, &target));
  EXPECT_PRED2(same, target, i4(2));
  EXPECT_EQ(DISPATCH_METHOD | DISPATCH_PROPERTYGET, object->last_flags());
}

TEST_F(DefaultMember, IsReadInPlace) {
  auto object = DefaultObject::holding(text(L"value"));
  CComVariant v = object_value(object);
  object.reset();
  EXPECT_EQ(S_OK, VariantChangeType(&v, &v, 0, VT_BSTR));
  EXPECT_PRED2(same, v, text(L"value"));
}

TEST_F(DefaultMember, IsReadThroughAnyInterfaceAndReference) {
  auto object = DefaultObject::holding(text(L"value"));
  CComVariant unknown = unknown_value(object.get());
  CComVariant dispatch = object_value(object);
  for (const CComVariant& source :
       {unknown, reference_to(unknown), reference_to(dispatch), reference_to_variant(dispatch)}) {
    CComVariant target;
    EXPECT_EQ(S_OK, change(source, VT_BSTR, &target));
    EXPECT_PRED2(same, target, text(L"value"));
  }
}

TEST_F(DefaultMember, MayAnswerAReference) {
  CComVariant held(L"held");
  const auto object = DefaultObject::make([&](VARIANT* result) {
    VariantInit(result);
    result->vt = VT_BYREF | VT_BSTR;
    result->pbstrVal = &held.bstrVal;
    return S_OK;
  });
  CComVariant target;
  EXPECT_EQ(S_OK, change(object_value(object), VT_BSTR, &target));
  EXPECT_PRED2(same, target, text(L"held"));
}

TEST_F(DefaultMember, OfADefaultMemberIsReadInTurn) {
  const auto inner = DefaultObject::holding(i4(7));
  const auto outer = DefaultObject::holding(object_value(inner));
  CComVariant target;
  EXPECT_EQ(S_OK, change(object_value(outer), VT_BSTR, &target));
  EXPECT_PRED2(same, target, text(L"7"));
}

// The one in the middle is held by nothing but the answer of the one in front of it, and takes its value along.
TEST_F(DefaultMember, MayAnswerAReferenceIntoAnObjectThatGoes) {
  static LONG value;
  struct Value {
    Value() { value = 7; }
    ~Value() { value = 0; }
  };
  const auto outer = DefaultObject::make([](VARIANT* result) {
    const auto inner = DefaultObject::make([kept = std::make_shared<Value>()](VARIANT* answer) {
      answer->vt = VT_BYREF | VT_I4;
      answer->plVal = &value;
      return S_OK;
    });
    CComVariant(static_cast<IDispatch*>(inner.get())).detach_to(result);
    return S_OK;
  });
  CComVariant target;
  EXPECT_EQ(S_OK, change(object_value(outer), VT_I4, &target));
  EXPECT_PRED2(same, target, i4(7));
  EXPECT_EQ(0, value);
}

TEST_F(DefaultMember, ThatIsTheObjectItselfIsAMismatch) {
  IDispatch* self = nullptr;
  const auto object = DefaultObject::make([&](VARIANT* result) {
    VariantInit(result);
    result->vt = VT_DISPATCH;
    result->pdispVal = self;
    self->AddRef();
    return S_OK;
  });
  self = object.get();
  CComVariant target(L"kept");
  EXPECT_EQ(DISP_E_TYPEMISMATCH, change(object_value(object), VT_BSTR, &target));
  EXPECT_PRED2(same, target, text(L"kept"));
}

TEST_F(DefaultMember, ThatIsMissingIsAMismatch) {
  for (const HRESULT hr : {DISP_E_MEMBERNOTFOUND, DISP_E_UNKNOWNNAME, DISP_E_BADPARAMCOUNT, E_NOTIMPL}) {
    const auto object = DefaultObject::make([hr](VARIANT*) { return hr; });
    CComVariant target(L"kept");
    EXPECT_EQ(DISP_E_TYPEMISMATCH, change(object_value(object), VT_BSTR, &target));
    EXPECT_PRED2(same, target, text(L"kept"));
  }
}

TEST_F(DefaultMember, ThatFailsPassesItsFailureOn) {
  const auto object = DefaultObject::make([](VARIANT*) { return E_ABORT; });
  CComVariant target;
  EXPECT_EQ(E_ABORT, change(object_value(object), VT_BSTR, &target));
  const CComVariant value = object_value(object);
  const CComVariant other(L"x");
  EXPECT_EQ(E_ABORT, VarCmp(&value, &other, 0, 0));
}

TEST_F(DefaultMember, OfNullOrOmittedIsAMismatch) {
  for (const CComVariant& held : {null(), error(DISP_E_PARAMNOTFOUND)}) {
    const auto object = DefaultObject::holding(held);
    CComVariant target;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, change(object_value(object), VT_BSTR, &target));
  }
}

TEST_F(DefaultMember, IsNothingWithoutAnObject) {
  CComVariant target;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, change(of_type(VT_DISPATCH), VT_BSTR, &target));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, change(of_type(VT_UNKNOWN), VT_I4, &target));
}

TEST_F(DefaultMember, IsNothingWithoutLateBinding) {
  PlainObject plain;
  {
    CComVariant target;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, change(unknown_value(&plain), VT_BSTR, &target));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, change(unknown_value(&plain), VT_DISPATCH, &target));
  }
  EXPECT_EQ(1u, plain.references());
}

TEST_F(DefaultMember, IsNotReadWhereAnObjectIsAskedFor) {
  const auto object = DefaultObject::make([](VARIANT*) {
    ADD_FAILURE() << "nobody asked for the value";
    return E_FAIL;
  });
  CComVariant target;
  EXPECT_EQ(S_OK, change(object_value(object), VT_UNKNOWN, &target));
  EXPECT_EQ(VT_UNKNOWN, target.vt);
  EXPECT_EQ(static_cast<IUnknown*>(object.get()), target.punkVal);
  EXPECT_EQ(S_OK, change(unknown_value(object.get()), VT_DISPATCH, &target));
  EXPECT_EQ(VT_DISPATCH, target.vt);
  EXPECT_EQ(S_OK, change(object_value(object), VT_DISPATCH, &target));
  EXPECT_EQ(2u, object->references());
  EXPECT_EQ(S_OK, change(of_type(VT_DISPATCH), VT_UNKNOWN, &target));
  EXPECT_EQ(nullptr, target.punkVal);
}

}  // namespace
