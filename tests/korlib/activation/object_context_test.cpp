#include <korlib_host/context.h>

#include <gtest/gtest.h>

#include <thread>

#include <korlib/activation.h>

#include "korlib/variant/default_object.h"

namespace {

CComPtr<IUnknown> context() {
  CComPtr<IUnknown> object;
  EXPECT_EQ(S_OK, CoGetObjectContext(IID_IUnknown, object.put_void()));
  return object;
}

TEST(ObjectContext, IsNoneOutsideARequest) {
  void* object = &object;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, CoGetObjectContext(IID_IUnknown, &object));
  EXPECT_EQ(nullptr, object);
  EXPECT_EQ(E_POINTER, CoGetObjectContext(IID_IUnknown, nullptr));
}

TEST(ObjectContext, HoldsForItsScopeAndThenTheOuterOneAgain) {
  PlainObject outer;
  PlainObject inner;
  {
    const korlib_host::ContextScope outer_scope(&outer);
    EXPECT_EQ(&outer, context().get());
    {
      const korlib_host::ContextScope inner_scope(&inner);
      EXPECT_EQ(&inner, context().get());
      EXPECT_EQ(2u, inner.references());
      const korlib_host::ContextScope no_scope(nullptr);
      void* object = nullptr;
      EXPECT_EQ(CONTEXT_E_NOCONTEXT, CoGetObjectContext(IID_IUnknown, &object));
    }
    EXPECT_EQ(&outer, context().get());
  }
  void* object = nullptr;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, CoGetObjectContext(IID_IUnknown, &object));
  EXPECT_EQ(1u, outer.references());
  EXPECT_EQ(1u, inner.references());
}

TEST(ObjectContext, AnswersOnlyToItsInterfaces) {
  PlainObject object;
  const korlib_host::ContextScope scope(&object);
  void* other = &other;
  EXPECT_EQ(E_NOINTERFACE, CoGetObjectContext(IID_IDispatch, &other));
  EXPECT_EQ(nullptr, other);
}

TEST(ObjectContext, BelongsToItsThread) {
  PlainObject object;
  const korlib_host::ContextScope scope(&object);
  HRESULT elsewhere = S_OK;
  std::thread([&] {
    void* none = nullptr;
    elsewhere = CoGetObjectContext(IID_IUnknown, &none);
  }).join();
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, elsewhere);
}

}  // namespace
