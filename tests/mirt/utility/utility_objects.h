// The two objects that carry the utility members; every test of them runs on both.
#pragma once

#include "support/late_bound.h"
#include "support/module.h"

namespace test {

// The parameter is the class's bare name.
class UtilityMembers : public testing::TestWithParam<const wchar_t*> {
 protected:
  void SetUp() override {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, module_.class_object(GetParam(), factory.put()));
    // A controller made outside of a request is told so, and comes all the same.
    factory->CreateInstance(nullptr, IID_IDispatch, object_.put_void());
    ASSERT_TRUE(object_);
  }
  void TearDown() override {
    object_.reset();
    EXPECT_EQ(0, module_.count()) << "an object is still held";
  }

  template <class... Arguments>
  Answer call(const wchar_t* name, const Arguments&... arguments) {
    return test::call(object_.get(), name, arguments...);
  }
  template <class... Arguments>
  std::wstring text(const wchar_t* name, const Arguments&... arguments) {
    return text_of(call(name, arguments...));
  }

  Module module_;
  CComPtr<IDispatch> object_;
};

#define ON_BOTH_OBJECTS(Suite)                                                                          \
  INSTANTIATE_TEST_SUITE_P(Objects, Suite, testing::Values(L"Utility", L"Mirt"), [](const auto& each) { \
    return std::wcscmp(each.param, L"Mirt") == 0 ? "Controller" : "Utility";                            \
  })

constexpr const wchar_t* kFailed = L"<code 80004005>";       // E_FAIL
constexpr const wchar_t* kBadArgument = L"<code 80070057>";  // E_INVALIDARG
constexpr const wchar_t* kNoMemory = L"<code 8007000E>";     // E_OUTOFMEMORY

}  // namespace test
