// What native code holds of the script while the engine collects its garbage.
#include "support/still.h"
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

// A script cannot be handed this object without the engine collecting everything that nobody holds.
struct Collecting final : StillDispatch<> {
  explicit Collecting(JSContextRef any) : context(any) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    JSSynchronousGarbageCollectForDebugging(context);
    return StillDispatch::QueryInterface(riid, ppv);
  }
  JSContextRef context;
};

class Collector : public ScriptTest {
 protected:
  Collector() : context(JSGlobalContextCreateInGroup(engine.group(), nullptr)), collecting(context) {}
  ~Collector() override {
    realm.reset();
    JSGlobalContextRelease(context);
  }

  // Calls the function that the script has kept in `o` with `count` values, and garbage collected between them.
  std::string call_with(std::size_t count, const std::function<CComVariant(std::size_t)>& value) {
    std::vector<CComVariant> reversed;
    for (std::size_t i = 0; i < count; ++i) {
      reversed.emplace_back(static_cast<IDispatch*>(&collecting));
      reversed.push_back(value(count - 1 - i));
    }
    DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    CComVariant result;
    EXPECT_EQ(S_OK, probe->kept.pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD,
                                                 &params, &result, nullptr, nullptr));
    return result.vt == VT_BSTR ? narrow(korlib::view_of(result.bstrVal)) : "no text";
  }

  JSGlobalContextRef context;
  Collecting collecting;
};

std::wstring word(std::size_t i) { return L"word number " + std::to_wstring(i); }

TEST_F(Collector, LeavesTheArgumentsOfACallAlone) {
  must_run(L"o.Keep((...all) => all.filter(v => typeof v == 'string').join())");
  for (const std::size_t count : {1U, 4U, 5U, 40U}) {
    std::string expected;
    for (std::size_t i = 0; i < count; ++i) expected += (i ? "," : "") + narrow(word(i));
    EXPECT_EQ(expected, call_with(count, [](std::size_t i) { return CComVariant(word(i)); }));
  }
}

}  // namespace
}  // namespace test
