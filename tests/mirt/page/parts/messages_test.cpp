#include "page/messages.h"

#include "mirt/page/parts/parts_fixture.h"

namespace test {
namespace {

class Messages : public PartsTest {
 protected:
  Messages() {
    // A mark inside the text shows the message at hand.
    engine_.on_mark = [this](const Mark&) { return messages_.draw_current(Params{L"first", L"second"}); };
  }
  bool exist(const CComVariant& key) {
    bool exist = false;
    EXPECT_EQ(S_OK, messages_.exist(key, &exist));
    return exist;
  }
  void add(const CComVariant& message, const wchar_t* key) { EXPECT_EQ(S_OK, messages_.add(message, key)); }
  std::wstring draw(std::initializer_list<std::wstring> params) {
    EXPECT_EQ(S_OK, messages_.draw(Params(params)));
    return drawn();
  }

  page::NestedTexts texts_{engine_};
  page::Messages messages_{texts_};
};

TEST_F(Messages, AreKeptAsCopiesInOrderUnderExactKeys) {
  const CComVariant omitted(korlib::omitted());
  EXPECT_FALSE(exist(omitted));
  {
    CComVariant text(L"one");
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &text.bstrVal;
    EXPECT_EQ(S_OK, messages_.add(reference, L""));
  }
  add(CComVariant(LONG{2}), L"");
  add(CComVariant(L"other"), L"A");
  EXPECT_EQ(L"<one><second>", draw({L"<(#x#)>"}));
  EXPECT_EQ(L"<other>", draw({L"A", L"<(#x#)>"}));
  EXPECT_TRUE(exist(omitted));
  EXPECT_TRUE(exist(CComVariant(L"A")));
  EXPECT_FALSE(exist(CComVariant(L"a")));
  bool untouched = true;
  EXPECT_EQ(E_INVALIDARG, messages_.exist(CComVariant(LONG{1}), &untouched));
  EXPECT_TRUE(untouched);
}

TEST_F(Messages, GiveWayToAnotherTextWhereThereAreNone) {
  EXPECT_EQ(L"", draw({L"text"}));
  EXPECT_EQ(L"", draw({L"key", L"text"}));
  EXPECT_EQ(L"none", draw({L"key", L"text", L"none"}));
}

TEST_F(Messages, AreShownOnlyWhileTheyAreDrawn) {
  add(CComVariant(L"outer"), L"outer");
  add(CComVariant(L"inner"), L"inner");
  EXPECT_EQ(E_FAIL, messages_.draw_current(Params{}));
  EXPECT_EQ(L"", take_error().description);
  engine_.on_mark = [this](const Mark& mark) {
    return mark.name == L"m" ? messages_.draw_current(Params{}) : messages_.draw(Params{L"inner", L"(#m#)"});
  };
  EXPECT_EQ(L"outer inner outer", draw({L"outer", L"(#m#) (#nested#) (#m#)"}));
  EXPECT_EQ(E_FAIL, messages_.draw_current(Params{}));
}

TEST_F(Messages, ThatAreNumbersNeedAParameter) {
  for (const LONG number : {0, 3}) {
    page::Messages messages(texts_);
    EXPECT_EQ(S_OK, messages.add(CComVariant(number), L""));
    engine_.on_mark = [&](const Mark&) { return messages.draw_current(Params{L"first", L"second"}); };
    EXPECT_EQ(E_FAIL, messages.draw(Params{L"(#x#)"}));
    EXPECT_EQ(L"Invalid OnDraw__Message_Text param length.", take_error().description);
  }
}

TEST_F(Messages, AddedMeanwhileWait) {
  add(CComVariant(L"a"), L"");
  engine_.on_mark = [this](const Mark&) { return messages_.add(CComVariant(L"b"), L""); };
  EXPECT_EQ(L".", draw({L"(#x#)."}));
  EXPECT_EQ(L"..", draw({L"(#x#)."}));
}

TEST_F(Messages, NestNoDeeperThanTheStackAllows) {
  int depth = 0;
  engine_.on_mark = [&](const Mark&) {
    ++depth;
    return texts_.draw(CComBSTR(L"(#x#)").get());
  };
  EXPECT_EQ(E_FAIL, texts_.draw(CComBSTR(L"(#x#)").get()));
  EXPECT_EQ(L"Template text is nested too deeply.", take_error().description);
  EXPECT_EQ(256, depth);
  engine_.on_mark = [](const Mark&) { return S_OK; };
  EXPECT_EQ(S_OK, texts_.draw(CComBSTR(L"again").get()));
  EXPECT_EQ(L"again", drawn());
}

}  // namespace
}  // namespace test
