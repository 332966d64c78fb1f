// The order and form in which arguments reach an object.
#include "script/call_arguments.h"

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using zelto::script::CallArguments;
using zelto::script::PutArguments;

class CallArgumentsTest : public ScriptTest {
 protected:
  // Of the numbers 1, undefined and 3.
  void convert_three() {
    JSContextRef ctx = realm->context();
    JSValueRef given[] = {JSValueMakeNumber(ctx, 1), JSValueMakeUndefined(ctx), JSValueMakeNumber(ctx, 3)};
    JSValueRef exception = nullptr;
    ASSERT_TRUE(arguments.convert(realm->values(), 3, given, &exception));
  }
  CallArguments arguments;
};

TEST_F(CallArgumentsTest, AreReversedForTheObject) {
  EXPECT_TRUE(arguments.empty());
  convert_three();
  const DISPPARAMS params = arguments.params();
  ASSERT_EQ(3U, params.cArgs);
  EXPECT_EQ(0U, params.cNamedArgs);
  EXPECT_EQ(3, params.rgvarg[0].lVal);
  EXPECT_TRUE(korlib::is_omitted(params.rgvarg[1]));
  EXPECT_EQ(1, params.rgvarg[2].lVal);
}

TEST_F(CallArgumentsTest, ComeFromAnObjectInTheirOrder) {
  CComVariant reversed[] = {CComVariant(LONG{2}), CComVariant(LONG{1})};
  const DISPPARAMS params{reversed, nullptr, 2, 0};
  LONG expected = 0;
  for (const VARIANT& argument : CallArguments::in_order(&params)) EXPECT_EQ(++expected, argument.lVal);
  EXPECT_EQ(2, expected);
  EXPECT_EQ(0U, CallArguments::in_order(nullptr).size());
}

TEST_F(CallArgumentsTest, AreFilledWhereOneWasOmittedOnly) {
  convert_three();
  DISPPARAMS params = arguments.params();
  EXPECT_FALSE(CallArguments::fill_omitted(&params, 0));
  EXPECT_FALSE(CallArguments::fill_omitted(&params, 3));
  EXPECT_TRUE(CallArguments::fill_omitted(&params, 1));
  EXPECT_EQ(VT_EMPTY, params.rgvarg[1].vt);
  EXPECT_FALSE(CallArguments::fill_omitted(&params, 1));
}

TEST_F(CallArgumentsTest, HaveTheAssignedValueInFront) {
  arguments.set_index(7);
  const CComVariant value(LONG{9});
  PutArguments put(arguments, value);
  const DISPPARAMS params = put.params();
  ASSERT_EQ(2U, params.cArgs);
  EXPECT_EQ(9, params.rgvarg[0].lVal);
  EXPECT_EQ(7, params.rgvarg[1].lVal);
  ASSERT_EQ(1U, params.cNamedArgs);
  EXPECT_EQ(DISPID_PROPERTYPUT, params.rgdispidNamedArgs[0]);
}

}  // namespace
}  // namespace test
