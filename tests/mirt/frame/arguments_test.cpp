#include "frame/arguments.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/late_bound.h"

namespace test {
namespace {

// What was freed while a test looks: addresses to compare with, not to read.
std::vector<const void*>* freed = nullptr;

bool was_freed(const std::vector<const void*>& all, const void* memory) {
  return std::find(all.begin(), all.end(), memory) != all.end();
}

}  // namespace
}  // namespace test

// In front of the runtime's, which do the work.
void SysFreeString(BSTR text) {
  static const auto next = reinterpret_cast<void (*)(BSTR)>(dlsym(RTLD_NEXT, "SysFreeString"));
  if (test::freed) test::freed->push_back(text);
  next(text);
}
HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  static const auto next = reinterpret_cast<HRESULT (*)(SAFEARRAY*)>(dlsym(RTLD_NEXT, "SafeArrayDestroy"));
  if (test::freed) test::freed->push_back(array);
  return next(array);
}

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

// A caller that wants only the effect passes no result; the value is then the callee's to free.
TEST(Results, AreFreedWhereNobodyWantsThem) {
  std::vector<const void*> all;
  freed = &all;
  const BSTR text = SysAllocString(L"x");
  SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  set_bstr_result(nullptr, text);
  set_array_result(nullptr, array);
  set_bool_result(nullptr, VARIANT_TRUE);
  EXPECT_EQ(S_OK, set_variant_result(nullptr, CComVariant(L"x")));
  set_dispatch_result(nullptr, nullptr);
  set_unknown_result(nullptr, nullptr);
  freed = nullptr;
  EXPECT_TRUE(was_freed(all, text));
  EXPECT_TRUE(was_freed(all, array));
}

// Scripts have no null array: it becomes no value.
TEST(Results, AreEmptyWithoutAnArray) {
  VARIANT result;
  result.vt = 0xA5A5;
  set_array_result(&result, nullptr);
  EXPECT_EQ(VT_EMPTY, result.vt);
}

TEST(Results, AreTheCallersAsTheyAre) {
  std::vector<const void*> all;
  freed = &all;
  CComVariant result;
  set_bstr_result(&result, SysAllocString(L"x"));
  EXPECT_EQ(L"x", std::wstring(korlib::view_of(result.bstrVal)));
  EXPECT_FALSE(was_freed(all, result.bstrVal));
  CComVariant copy;
  EXPECT_EQ(S_OK, set_variant_result(&copy, result));
  EXPECT_NE(result.bstrVal, copy.bstrVal);
  EXPECT_EQ(L"x", std::wstring(korlib::view_of(copy.bstrVal)));
  freed = nullptr;
}

}  // namespace
}  // namespace test
