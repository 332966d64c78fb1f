// What members do when memory runs out in them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <korlib/comvariant.h>

#include "support/failing_allocations.h"

namespace test {

// A member called on an object that is made anew each time. `state` tells all that can be seen of the object; `answer`
// what came out of the call, as text.
struct Operation {
  const char* name;
  std::function<void()> prepare;
  std::function<HRESULT(VARIANT* out)> run;
  std::function<std::wstring()> state;
};

inline std::wstring shown(const VARIANT& value) {
  CComVariant text;
  if (value.vt & VT_ARRAY) return L"array " + std::to_wstring(value.parray ? value.parray->rgsabound[0].cElements : 0);
  return SUCCEEDED(VariantChangeType(&text, &value, 0, VT_BSTR)) ? std::wstring(korlib::view_of(text.bstrVal))
                                                                 : L"type " + std::to_wstring(value.vt);
}

// Each allocation fails in its turn, alone and with those after it: the call answers E_OUTOFMEMORY, gives nothing and
// leaves the object as it was, or does all that it does with memory; called once more it does. How many failed alone.
inline int expect_all_or_nothing(const Operation& operation) {
  operation.prepare();
  const std::wstring before = operation.state();
  CComVariant answer;
  EXPECT_EQ(S_OK, operation.run(&answer)) << operation.name;
  const std::wstring expected = shown(answer) + L" | " + operation.state();
  int failures = 0;
  for (const int times : {1, 3, FailingAllocation::kAll}) {
    failures = each_allocation_failing([&](int n) {
      operation.prepare();
      CComVariant out;
      HRESULT hr = S_FALSE;
      bool failed = false;
      try {
        const FailingAllocation failing(n, times);
        hr = operation.run(&out);
        failed = failing.has_failed();
      } catch (const std::bad_alloc&) {
        ADD_FAILURE() << operation.name << " at " << n << ": an exception crossed";
        return false;
      }
      if (FAILED(hr)) {
        EXPECT_EQ(E_OUTOFMEMORY, hr) << operation.name << " at " << n;
        EXPECT_EQ(VT_EMPTY, out.vt) << operation.name << " at " << n;
        EXPECT_EQ(before, operation.state()) << operation.name << " at " << n;
        EXPECT_EQ(S_OK, operation.run(out.put())) << operation.name << " at " << n;
      }
      EXPECT_EQ(expected, shown(out) + L" | " + operation.state()) << operation.name << " at " << n;
      return failed && !testing::Test::HasFailure();
    });
  }
  return failures;
}

// The same for each of several, and that nothing of what was asked for stays behind.
inline void expect_all_or_nothing(const std::vector<Operation>& operations, const std::function<void()>& let_go) {
  for (const Operation& operation : operations) {
    expect_all_or_nothing(operation);
    let_go();
    const long before = live_allocations();
    expect_all_or_nothing(operation);
    let_go();
    EXPECT_EQ(before, live_allocations()) << operation.name;
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace test
