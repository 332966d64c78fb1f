#include "intrinsics/page_context.h"

#include <korlib/activation.h>
#include <korlib_host/context.h>

#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class PageContext : public PageTest {};

TEST_F(PageContext, GivesTheIntrinsicObjectsOfTheRequest) {
  const auto response = response_object();
  CComPtr<zelto::PageContext> context;
  context.attach(new zelto::PageContext({{L"Response", CComPtr<IDispatch>(response.get())}}));
  const korlib_host::ContextScope scope(context.get());
  CComPtr<IGetContextProperties> asked;
  ASSERT_EQ(S_OK, CoGetObjectContext(IID_IGetContextProperties, asked.put_void()));
  LONG count = 0;
  EXPECT_EQ(S_OK, asked->Count(&count));
  EXPECT_EQ(1, count);
  CComVariant value;
  EXPECT_EQ(S_OK, asked->GetProperty(CComBSTR(L"Response"), &value));
  EXPECT_EQ(VT_DISPATCH, value.vt);
  EXPECT_EQ(static_cast<IDispatch*>(response.get()), value.pdispVal);
  EXPECT_EQ(E_INVALIDARG, asked->GetProperty(CComBSTR(L"Session"), value.put()));
  EXPECT_EQ(VT_EMPTY, value.vt);
}

}  // namespace
