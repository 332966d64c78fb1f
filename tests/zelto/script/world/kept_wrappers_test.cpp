// Wrappers that stay in a world for the objects of the pages to come.
#include "zelto/script/world/kept_world_fixture.h"

namespace test {
namespace {

class KeptWrappers : public KeptWorldTest {
 protected:
  KeptWrappers() {
    probe->action = [this] {
      probe->inner = CComPtr<IDispatch>(korlib::make<Probe>().get());
      return S_OK;
    };
  }

  // The page, with what it writes, and the wrapper of the last object that it has made.
  JSObjectRef wrapper_after(const ProgramPtr& program, const std::string& expected) {
    page->text.clear();
    open(program);
    const Outcome outcome = realm->run(program);
    EXPECT_EQ(Outcome::completed, outcome.kind) << said(outcome);
    EXPECT_EQ(expected, narrow(page->text));
    JSObjectRef wrapper = realm->wrappers().wrap(probe->inner.get());
    context = realm->context();
    realm.reset();
    return wrapper;
  }
};

TEST_F(KeptWrappers, StandForTheObjectsOfTheNextPage) {
  const ProgramPtr program = page_of(
      L"o.Act(); var i = o.Inner; i.Close(); i.Close(); i.Name += '!'; Response.Write(i.Name + (i === o.Inner))");
  wrapper_after(program, "probe!true");
  JSObjectRef second = wrapper_after(program, "probe!true");
  for (int i = 0; i < 4; ++i) {
    const CComPtr<IDispatch> before = probe->inner;
    EXPECT_EQ(second, wrapper_after(program, "probe!true")) << i;
    EXPECT_EQ(2, static_cast<Probe*>(before.get())->closed) << i;
    EXPECT_EQ(2, static_cast<Probe*>(probe->inner.get())->closed) << i;
  }
}

// What a page has done to one shows in no other page, and costs nobody more than that wrapper.
TEST_F(KeptWrappers, AreLetGoWhenThePageHasChangedThem) {
  for (const wchar_t* change :
       {L"Object.setPrototypeOf(i, { x: 1 })", L"Object.defineProperty(i, 'x', { value: 1 })", L"Object.freeze(i)",
        L"close.x = 1", L"Object.setPrototypeOf(close, { x: 1 })", L"Object.preventExtensions(close)"}) {
    const std::wstring look =
        L"var close = [i][0].Close; var seen = '' + i.x + close.x + Object.isExtensible(i) + "
        L"Object.isExtensible(close);";
    const ProgramPtr program = page_of(L"o.Act(); var i = o.Inner;" + look + change + L"; Response.Write(seen)");
    const std::string untouched = "undefinedundefinedtruetrue";
    wrapper_after(program, untouched);
    JSObjectRef wrapper = wrapper_after(program, untouched);
    JSContextRef world = context;
    for (int n = 0; n < 3; ++n) {
      JSObjectRef next = wrapper_after(program, untouched);
      EXPECT_NE(wrapper, next) << narrow(change);
      EXPECT_EQ(world, context) << narrow(change);
      wrapper = next;
    }
  }
}

TEST_F(KeptWrappers, AreOfTheirClass) {
  const ProgramPtr program = page_of(L"Response.Write(typeof o.Inner.Close + typeof o.Inner.Value)");
  const auto with = [&](CComPtr<IDispatch> inner) {
    probe->inner = std::move(inner);
    return ask(program);
  };
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ("functionundefined", with(CComPtr<IDispatch>(korlib::make<Probe>().get()))) << i;
    EXPECT_EQ("undefinedundefined", with(CComPtr<IDispatch>(korlib::make<Row>().get()))) << i;
  }
}

TEST_F(KeptWrappers, AreSomeOfManyObjects) {
  const ProgramPtr program = page_of(
      L"var all = []; for (var n = 0; n < 50; n++) { o.Act(); all.push(o.Inner); o.Inner.Name = 'n' + n }"
      L"Response.Write(all.map(function (one) { return one.Name }).join('') + new Set(all).size)");
  std::string expected;
  for (int n = 0; n < 50; ++n) expected += "n" + std::to_string(n);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(expected + "50", ask(program)) << i;
}

TEST_F(KeptWrappers, KeepNoObjectBeyondItsPage) {
  const ProgramPtr program = page_of(L"for (var n = 0; n < 3; n++) { o.Act(); o.Inner.Close() }");
  const int before = Probe::alive;
  for (int i = 0; i < 4; ++i) {
    ask(program);
    probe->inner.reset();
    EXPECT_EQ(before, Probe::alive) << i;
  }
}

// A function that a page has got from one, and left behind, is not the next page's.
TEST_F(KeptWrappers, AnswerAPageThatHasEndedThatItHas) {
  const ProgramPtr program = page_of(L"o.Act(); var close = [o.Inner][0].Close; o.Hold(function () { close() })");
  for (int i = 0; i < 4; ++i) {
    const CComPtr<IDispatch> held = std::exchange(probe->held, {});
    ask(program);
    DISPPARAMS none{};
    if (!held) continue;
    EXPECT_TRUE(FAILED(held->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                                    nullptr, nullptr)));
    EXPECT_EQ(0, static_cast<Probe*>(probe->inner.get())->closed);
  }
}

}  // namespace
}  // namespace test
