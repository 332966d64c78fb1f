// Messages of a page, and the marks that show them.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class MessageMarks : public PageTest {
 protected:
  bool exists(const CComVariant& key) { return is_true(call(page(), L"MessageExists", key)); }
};

TEST_F(MessageMarks, ExistOnceAdded) {
  EXPECT_FALSE(exists(CComVariant(korlib::omitted())));
  EXPECT_FALSE(exists(CComVariant(L"")));
  const Answer before = call(page(), L"MessageExists");
  EXPECT_EQ(S_OK, before.hr);
  EXPECT_EQ(VT_BOOL, before.value.vt);
  EXPECT_FALSE(is_true(before));
  EXPECT_EQ(S_OK, call(page(), L"AddMessage", L"m", L"key").hr);
  EXPECT_TRUE(is_true(call(page(), L"MessageExists")));
  EXPECT_TRUE(exists(CComVariant(korlib::omitted())));
  EXPECT_TRUE(exists(CComVariant(L"key")));
  EXPECT_FALSE(exists(CComVariant(L"KEY")));
  EXPECT_FALSE(exists(CComVariant(L"")));
  EXPECT_EQ(E_INVALIDARG, call(page(), L"MessageExists", 1).hr);
  EXPECT_EQ(E_INVALIDARG, call(page(), L"MessageExists", CComVariant()).hr);
}

TEST_F(MessageMarks, AreDrawnInOrderEachWithItsText) {
  call(page(), L"AddMessage", L"one", L"");
  call(page(), L"AddMessage", L"two", L"");
  call(page(), L"AddMessage", L"other", L"k");
  EXPECT_EQ(L"<one><two>", draw(L"(#%_Message|<(#%_Message_Text#)>#)"));
  EXPECT_EQ(L"<other>", draw(L"(#%_Message|k#|#<(#%_Message_Text#)>#)"));
  EXPECT_EQ(L"<other>", draw(L"(#%_Message|k#|#<(#%_Message_Text#)>#|#none#)"));
  EXPECT_EQ(L"none", draw(L"(#%_Message|K#|#<(#%_Message_Text#)>#|#none#)"));
  EXPECT_EQ(L"", draw(L"(#%_Message|K#|#<(#%_Message_Text#)>#)"));
  EXPECT_EQ(L"<one><two>", draw(L"(#%_Message|#|#<(#%_Message_Text#)>#)"));
}

TEST_F(MessageMarks, ATextIsItselfATemplate) {
  script().value(L"v", CComVariant(L"drawn"));
  call(page(), L"AddMessage", L"a(#:v#)b", L"");
  EXPECT_EQ(L"adrawnb", draw(L"(#%_Message|(#%_Message_Text|ignored#)#)"));
  EXPECT_EQ(L"drawn", draw(L"(#%_Message|none#|#x#|#(#:v#)#)"));
}

TEST_F(MessageMarks, ANumberChoosesOneOfTheTexts) {
  const struct {
    CComVariant message;
    const wchar_t* drawn;
  } cases[] = {
      {CComVariant(LONG{1}), L"first"},
      {CComVariant(LONG{2}), L"second"},
      {CComVariant(2.0), L"second"},
      {CComVariant(LONG{0}), L"<code 80004005>Invalid OnDraw__Message_Text param length."},
      {CComVariant(LONG{3}), L"<code 80004005>Invalid OnDraw__Message_Text param length."},
      {CComVariant(LONG{-1}), L"<code 80004005>Invalid OnDraw__Message_Text param length."},
      {CComVariant(LONG{65537}), L"<code 80004005>Invalid OnDraw__Message_Text param length."},
      {null_value(), L"<code 80020005>[(#%_Message#)]"},
      {CComVariant(1e300), L"<code 8002000A>[(#%_Message#)]"},
  };
  int number = 0;
  for (const auto& row : cases) {
    const std::wstring key = std::to_wstring(number++);
    call(page(), L"AddMessage", row.message, key);
    const std::wstring drawn = draw(L"(#%_Message|" + key + L"#|#(#%_Message_Text|first#|#second#)#)");
    EXPECT_EQ(row.drawn, drawn.substr(0, std::wstring(row.drawn).size())) << testing::PrintToString(row.message);
  }
}

TEST_F(MessageMarks, ThereIsACurrentOneOnlyWhileItIsDrawn) {
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
  call(page(), L"AddMessage", L"m", L"");
  EXPECT_EQ(L"m", draw(L"(#%_Message|(#%_Message_Text#)#)"));
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
  EXPECT_EQ(L"<code 80020006>", draw(L"(#%_Message|(#:missing#)#)").substr(0, 15));
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
}

TEST_F(MessageMarks, DrawingStopsAtTheFirstFailure) {
  call(page(), L"AddMessage", L"one", L"");
  call(page(), L"AddMessage", 5, L"");
  call(page(), L"AddMessage", L"three", L"");
  EXPECT_EQ(L"<code 80004005>Invalid OnDraw__Message_Text param length.one", draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

TEST_F(MessageMarks, DrawersNest) {
  call(page(), L"AddMessage", L"outer", L"");
  call(page(), L"AddMessage", L"inner", L"k");
  EXPECT_EQ(L"outer inner outer",
            draw(L"(#%_Message|(#%_Message_Text#) (#%_Message|k#|#(#%_Message_Text#)#) (#%_Message_Text#)#)"));
}

TEST_F(MessageMarks, OnesAddedWhileDrawingWaitForTheNextDrawing) {
  call(page(), L"AddMessage", L"one", L"");
  script().function(L"OnDraw_more", [](const Arguments& a) {
    for (int i = 0; i < 100; ++i) call(a[0].pdispVal, L"AddMessage", L"m", L"");
    return CComVariant();
  });
  EXPECT_EQ(L"one", draw(L"(#%_Message|(#%more#)(#%_Message_Text#)#)"));
  EXPECT_EQ(L"one" + std::wstring(100, L'm'), draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

TEST_F(MessageMarks, KeepACopyOfWhatWasAdded) {
  CComVariant variable(L"then");
  call(page(), L"AddMessage", by_reference(&variable), L"");
  variable = CComVariant(L"now");
  EXPECT_EQ(L"then", draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

}  // namespace
}  // namespace test
