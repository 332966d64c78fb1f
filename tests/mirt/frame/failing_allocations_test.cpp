// Memory that runs out while a mark's texts are handed to a script function.
#include <sstream>

#include <gtest/gtest.h>

#include "frame/script_event.h"
#include "support/failing_allocations.h"
#include "support/still.h"

namespace test {
namespace {

// Counts its calls, and looks at nothing.
class Counting final : public StillDispatch<> {
 public:
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    ++calls;
    return S_OK;
  }

  int calls = 0;
};

// A script is called with all the texts or not at all.
TEST(FailingTexts, AreAnAnswerAndNoCall) {
  std::wstringstream first(L"a text that no small buffer holds");
  std::wstringstream second(L"another one that no small buffer holds");
  const std::vector<std::wstringstream*> texts = {&first, &second};
  Counting script;
  CEvent event;
  event.dispatch = &script;
  HRESULT hr = E_FAIL;
  int failures = 0;
  for (int n = 0; FAILED(hr); ++n) {
    ASSERT_LT(n, 100);
    const FailingAllocation failing(n);
    hr = fire_with_texts(event, &script, texts);
    EXPECT_EQ(SUCCEEDED(hr) ? 1 : 0, script.calls) << n;
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      ++failures;
    }
  }
  EXPECT_EQ(S_OK, hr);
  EXPECT_GE(failures, 3) << "the array and each text";
}

}  // namespace
}  // namespace test
