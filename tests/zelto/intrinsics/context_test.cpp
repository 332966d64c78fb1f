#include <korlib/activation.h>
#include <korlib_host/context.h>

#include "intrinsics/page_context.h"
#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class Context : public PageTest {};

TEST_F(Context, GivesTheIntrinsicObjectsOfTheRequest) {
  const auto response = response_object();
  CComPtr<zelto::PageContext> context;
  context.attach(new zelto::PageContext({{L"Response", CComPtr<IDispatch>(response.get())}}));
  const korlib_host::ContextScope scope(context.get());
  CComPtr<IGetContextProperties> asked;
  ASSERT_EQ(CoGetObjectContext(IID_IGetContextProperties, asked.put_void()), S_OK);
  LONG count = 0;
  EXPECT_EQ(asked->Count(&count), S_OK);
  EXPECT_EQ(count, 1);
  CComVariant value;
  EXPECT_EQ(asked->GetProperty(CComBSTR(L"Response"), &value), S_OK);
  EXPECT_EQ(value.vt, VT_DISPATCH);
  EXPECT_EQ(value.pdispVal, static_cast<IDispatch*>(response.get()));
  EXPECT_EQ(asked->GetProperty(CComBSTR(L"Session"), value.put()), E_INVALIDARG);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

}  // namespace
