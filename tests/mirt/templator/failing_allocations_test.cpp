// Memory that runs out at any point: a clear answer, and nothing lost.
#include <new>

#include "mirt/templator/engine.h"
#include "support/failing_allocations.h"
#include "support/template_places.h"

namespace test {
namespace {

// Counts what it gets without keeping it.
class Counter final : public CTemplatorConcept {
 public:
  Counter() : CTemplatorConcept(kChildTypes) {}
  HRESULT OnMarked(CMarkData& mark) override {
    const CComBSTR name = bstr_of(mark.Name);
    return name.get() ? S_OK : E_OUTOFMEMORY;
  }
};

constexpr const wchar_t* kTemplate =
    L"a long run of literal text, longer than any small buffer(#%name of some length|first parameter#|#second "
    L"parameter#)^(#more(#:x#)";

HRESULT draw(const CComPtr<RecordingSink>& sink, const CComBSTR& text) {
  Counter engine;
  RETURN_IF_FAILED(engine.putref_Output(sink->unknown()));
  RETURN_IF_FAILED(engine.Process(text.get()));
  auto* tmpl = new (std::nothrow) CTemplate;
  if (!tmpl) return E_OUTOFMEMORY;
  HRESULT hr = engine.Parse(text.get(), *tmpl);
  if (SUCCEEDED(hr)) hr = engine.Process(*tmpl);
  tmpl->Release();
  return hr;
}

// The sink's own records are made beforehand.
CComPtr<RecordingSink> ready_sink() {
  auto sink = RecordingSink::make(kResponse);
  sink->outputs.reserve(1000);
  sink->addresses.reserve(1000);
  return sink;
}

TEST(FailingAllocations, AreAnAnswerAtEveryPoint) {
  const CComBSTR text(kTemplate);
  int failures = 0;
  HRESULT hr = E_OUTOFMEMORY;
  for (int n = 0; FAILED(hr); ++n) {
    ASSERT_LT(n, 1000);
    const auto sink = ready_sink();
    try {
      const FailingAllocation failing(n);
      hr = draw(sink, text);
    } catch (const std::bad_alloc&) {
      hr = S_FALSE;  // an exception that crossed
    }
    EXPECT_NE(S_FALSE, hr) << n;
    if (hr == S_FALSE) hr = E_OUTOFMEMORY;
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      ++failures;
    }
    EXPECT_EQ(1u, sink->references());
  }
  EXPECT_GT(failures, 10);
}

// A place that cannot be told is left away, and the failure is the one that it was.
TEST(FailingAllocations, LeaveAFailingMarkItsOwnFailure) {
  class Refusing final : public CTemplatorConcept {
   public:
    Refusing() : CTemplatorConcept(kChildTypes) {}
    HRESULT OnMarked(CMarkData&) override {
      was_reached = true;
      return E_ABORT;
    }
    bool was_reached = false;
  };
  const CComBSTR text(L"text (#%name of some length|first parameter of some length#)");
  bool was_told = false;
  for (int n = 0; !was_told; ++n) {
    ASSERT_LT(n, 1000);
    const auto sink = ready_sink();
    Refusing engine;
    ASSERT_EQ(S_OK, engine.putref_Output(sink->unknown()));
    CTemplate tmpl;
    ASSERT_EQ(S_OK, engine.Parse(text.get(), tmpl));
    SetErrorInfo(0, nullptr);
    HRESULT hr = S_OK;
    bool failed = false;
    {
      const FailingAllocation failing(n);
      hr = engine.Process(tmpl, text.view());
      failed = failing.has_failed();
    }
    EXPECT_EQ(engine.was_reached ? E_ABORT : E_OUTOFMEMORY, hr) << n;
    was_told = !failed;
  }
  EXPECT_EQ(L"(text):1:6: (#%name of some length|first parameter of some length#)", take_placed_error().places);
}

TEST(FailingAllocations, AreAnAnswerWhereAValueBecomesText) {
  std::wstringstream entry(L"1");
  const MarkParams path{&entry};
  const CComVariant list = value_of(std::vector<CComVariant>{value_of(L"zero"), value_of(123)});
  int failures = 0;
  HRESULT hr = E_OUTOFMEMORY;
  for (int n = 0; FAILED(hr); ++n) {
    ASSERT_LT(n, 100);
    CComVariant value(list);
    {
      const FailingAllocation failing(n);
      hr = CTemplatorConcept::ChangeToBSTR(&value, &path, false);
    }
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      ++failures;
    }
  }
  EXPECT_GE(failures, 1);
}

}  // namespace
}  // namespace test
