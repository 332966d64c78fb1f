#include <korlib_host/context.h>

#include <gtest/gtest.h>

#include <thread>

#include <korlib/activation.h>

#include "default_object.h"

namespace {

CComPtr<IUnknown> context() {
  CComPtr<IUnknown> object;
  EXPECT_EQ(CoGetObjectContext(IID_IUnknown, object.put_void()), S_OK);
  return object;
}

TEST(ObjectContext, IsNoneOutsideARequest) {
  void* object = &object;
  EXPECT_EQ(CoGetObjectContext(IID_IUnknown, &object), CONTEXT_E_NOCONTEXT);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(CoGetObjectContext(IID_IUnknown, nullptr), E_POINTER);
}

TEST(ObjectContext, HoldsForItsScopeAndThenTheOuterOneAgain) {
  PlainObject outer;
  PlainObject inner;
  {
    const korlib_host::ContextScope outer_scope(&outer);
    EXPECT_EQ(context().get(), &outer);
    {
      const korlib_host::ContextScope inner_scope(&inner);
      EXPECT_EQ(context().get(), &inner);
      EXPECT_EQ(inner.references(), 2u);
      const korlib_host::ContextScope no_scope(nullptr);
      void* object = nullptr;
      EXPECT_EQ(CoGetObjectContext(IID_IUnknown, &object), CONTEXT_E_NOCONTEXT);
    }
    EXPECT_EQ(context().get(), &outer);
  }
  void* object = nullptr;
  EXPECT_EQ(CoGetObjectContext(IID_IUnknown, &object), CONTEXT_E_NOCONTEXT);
  EXPECT_EQ(outer.references(), 1u);
  EXPECT_EQ(inner.references(), 1u);
}

TEST(ObjectContext, AnswersOnlyToItsInterfaces) {
  PlainObject object;
  const korlib_host::ContextScope scope(&object);
  void* other = &other;
  EXPECT_EQ(CoGetObjectContext(IID_IDispatch, &other), E_NOINTERFACE);
  EXPECT_EQ(other, nullptr);
}

TEST(ObjectContext, BelongsToItsThread) {
  PlainObject object;
  const korlib_host::ContextScope scope(&object);
  HRESULT elsewhere = S_OK;
  std::thread([&] {
    void* none = nullptr;
    elsewhere = CoGetObjectContext(IID_IUnknown, &none);
  }).join();
  EXPECT_EQ(elsewhere, CONTEXT_E_NOCONTEXT);
}

}  // namespace
