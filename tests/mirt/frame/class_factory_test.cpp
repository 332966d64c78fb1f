// Class objects that bind what they make to a request, over an object kind made for the test.
#include "frame/class_factory.h"

#include <gtest/gtest.h>

#include <korlib_host/context.h>
#include <mirt/mirt.h>

#include "frame/entry_points.h"
#include "mirt/frame/pooled_kind.h"

namespace test {
namespace {

// A context object that has nothing.
class Context : public IGetContextProperties {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IGetContextProperties, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT Count(LONG*) override { return E_NOTIMPL; }
  HRESULT GetProperty(BSTR, VARIANT*) override { return E_NOTIMPL; }
  HRESULT EnumNames(IUnknown**) override { return E_NOTIMPL; }
  ULONG references = 1;
};

class InContextClasses : public testing::Test {
 protected:
  HRESULT create(IDispatch** object) {
    return class_.CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(object));
  }
  GClassFactoryPooledInContext<Pooled, &live_count> class_;
};

TEST_F(InContextClasses, BindObjectsToTheRequest) {
  Context context;
  {
    const korlib_host::ContextScope scope(&context);
    for (const HRESULT code : {S_OK, S_FALSE, E_FAIL, E_ACCESSDENIED}) {
      Kind::in_context = code;
      CComPtr<IDispatch> object;
      EXPECT_EQ(code, create(object.put()));
      EXPECT_TRUE(object) << "the caller releases it, also after a failure";
    }
    Kind::in_context = S_OK;
    void* none = &context;
    EXPECT_EQ(E_NOINTERFACE, class_.CreateInstance(nullptr, IID_IClassFactory, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, class_.CreateInstance(&context, IID_IDispatch, &none));
  }
  EXPECT_EQ(1u, context.references);
  EXPECT_EQ(0, live_count);
}

// A host that says it has a context, and gives none: what it said is the answer, and nothing is bound.
TEST_F(InContextClasses, AnswerTheHostsCodeWithoutAContextObject) {
  class Silent final : public Context {
   public:
    HRESULT QueryInterface(REFIID, void** ppv) override {
      *ppv = nullptr;
      return answer;
    }
    HRESULT answer = S_OK;
  } context;
  const korlib_host::ContextScope scope(&context);
  Kind::in_context = E_ACCESSDENIED;  // of a binding
  for (const HRESULT code : {S_OK, S_FALSE, E_NOINTERFACE}) {
    context.answer = code;
    CComPtr<IDispatch> object;
    EXPECT_EQ(code, create(object.put()));
    EXPECT_TRUE(object);
  }
  Kind::in_context = S_OK;
}

TEST_F(InContextClasses, AnswerTheHostsCodeOutsideOfARequest) {
  CComPtr<IDispatch> object;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, create(object.put()));
  EXPECT_TRUE(object);
}

TEST(ClassObjects, NeedAPlaceToGoTo) {
  EXPECT_EQ(E_POINTER, DllGetClassObject(CLSID_Utility, IID_IClassFactory, nullptr));
  EXPECT_EQ(E_POINTER, DllGetClassObject(CLSID_NULL, IID_IClassFactory, nullptr));
}

}  // namespace
}  // namespace test
