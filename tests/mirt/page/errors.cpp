// What a failure is reported as.
#include <korlib/activation.h>

#include "mirt/page/page_test.h"

namespace test {
namespace {

// Where the stack is used up no script can be asked, so a name is not missing because of it.
class NoStackForALookUp : public PageTest {
 protected:
  void SetUp() override { script().fail_unknown_names(korlib::kOutOfStack); }
};

TEST_F(NoStackForALookUp, OfADrawEventIsReported) {
  EXPECT_EQ(L"<code 800A001C>[(#%none#)]", draw(L"(#%none#)"));
  EXPECT_EQ(L"<code 800A001C>[(#%_Message#)]", draw(L"(#%_Message|m#)")) << "a built-in one is not drawn in its place";
}

TEST_F(NoStackForALookUp, InAChildIsReported) {
  const korlib_host::ContextScope scope(asp_.context.get());
  const CComPtr<IDispatch> child = object_of(call(page(), L"NewTemplator", L"Row_"));
  ASSERT_TRUE(child);
  EXPECT_EQ(S_OK, putref(child.get(), L"Script", script_).hr);
  EXPECT_EQ(L"<code 800A001C>", text_of(call(child.get(), L"ProcessTemplate", L"(#%none#)")));
}

TEST_F(NoStackForALookUp, InATextTemplatorIsReportedAndNoKeyIsAskedFor) {
  script().function(L"", [](const Arguments&) { return CComVariant(L"by key"); });
  const CComPtr<IDispatch> templator = module_.create(L"TextTemplator");
  EXPECT_EQ(S_OK, putref(templator.get(), L"Script", script_).hr);
  EXPECT_EQ(L"<code 800A001C>", text_of(call(templator.get(), L"ProcessTemplate", L"(#none#)")));
  script().fail_unknown_names(DISP_E_UNKNOWNNAME);
  EXPECT_EQ(S_OK, call(templator.get(), L"ProcessTemplate", L"(#none#)").hr);
  EXPECT_EQ(L"by key", text_of(call(templator.get(), L"Flush")));
}

}  // namespace
}  // namespace test
