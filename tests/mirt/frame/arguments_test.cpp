#include "frame/arguments.h"

#include <gtest/gtest.h>

#include "support/late_bound.h"

namespace test {
namespace {

// The arguments of one call, in the order of writing.
class CallArguments {
 public:
  explicit CallArguments(std::vector<VARIANT> arguments) : block_(arguments.rbegin(), arguments.rend()) {}
  const DISPPARAMS* get() const { return &params_; }
  VARIANT* at(std::size_t i) { return &block_[block_.size() - 1 - i]; }

 private:
  std::vector<VARIANT> block_;
  DISPPARAMS params_{block_.data(), nullptr, static_cast<UINT>(block_.size()), 0};
};

VARIANT reference_to(VARIANT* target) {
  VARIANT reference{};
  reference.vt = VT_BYREF | VT_VARIANT;
  reference.pvarVal = target;
  return reference;
}

TEST(DispArg, CountsInTheOrderOfWriting) {
  CComVariant target(L"x");
  CallArguments arguments({korlib::long_variant(7), reference_to(&target), korlib::long_variant(9)});
  EXPECT_EQ(arguments.at(0), disp_arg(arguments.get(), 0));
  EXPECT_EQ(7, disp_arg(arguments.get(), 0)->lVal);
  EXPECT_EQ(&target, disp_arg(arguments.get(), 1));
  EXPECT_EQ(9, disp_arg(arguments.get(), 2)->lVal);
  EXPECT_EQ(nullptr, disp_arg(arguments.get(), 3));
  EXPECT_EQ(nullptr, disp_arg(nullptr, 0));
}

// An argument that refers to nothing is there, and is what it is.
TEST(DispArg, StaysAReferenceThatRefersToNothing) {
  CallArguments arguments({reference_to(nullptr)});
  EXPECT_EQ(arguments.at(0), disp_arg(arguments.get(), 0));
  for (const VARTYPE type : {VT_BSTR, VT_I4, VT_BOOL}) {
    CComVariant converted;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, coerce_arg(arguments.get(), 0, type, &converted)) << type;
    EXPECT_EQ(VT_EMPTY, converted.vt);
  }
  CComPtr<IDispatch> dispatch;
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, get_dispatch_arg(arguments.get(), 0, &dispatch));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, get_unknown_arg(arguments.get(), 0, &unknown));
}

// One reference is followed, and no further one behind it.
TEST(DispArg, FollowsOneReference) {
  CComVariant target(LONG{5});
  VARIANT inner = reference_to(&target);
  CallArguments arguments({reference_to(&inner)});
  EXPECT_EQ(&inner, disp_arg(arguments.get(), 0));
}

TEST(CoerceArg, ConvertsOrSaysWhy) {
  CComVariant text(L"12");
  CComVariant converted;
  CallArguments arguments({reference_to(&text), korlib::borrowed(static_cast<IDispatch*>(nullptr))});
  EXPECT_EQ(S_OK, coerce_arg(arguments.get(), 0, VT_I4, &converted));
  EXPECT_EQ(VT_I4, converted.vt);
  EXPECT_EQ(12, converted.lVal);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, coerce_arg(arguments.get(), 1, VT_I4, converted.put()));
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, coerce_arg(arguments.get(), 2, VT_I4, converted.put()));
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, coerce_arg(nullptr, 0, VT_I4, converted.put()));
}

}  // namespace
}  // namespace test
