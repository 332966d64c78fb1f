// Names that are looked up in several scripts, some of which refuse to look.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class LookUps : public PageTest {
 protected:
  void SetUp() override { EXPECT_EQ(S_OK, call(page(), L"AddScript", later_).hr); }
  void TearDown() override {
    later_->forget_calls();
    later_.reset();
    PageTest::TearDown();
  }
  // What the two answer for a name that they do not have.
  void refuse(HRESULT first, HRESULT later) {
    script().fail_unknown_names(first);
    later_->fail_unknown_names(later);
  }
  std::vector<std::wstring> asked_of_both() {
    std::vector<std::wstring> names = later_->asked();
    names.insert(names.end(), script().asked().begin(), script().asked().end());
    return names;
  }

  const CComPtr<FakeScript>& first() { return script_; }
  CComPtr<FakeScript> later_ = FakeScript::make();
};

TEST_F(LookUps, OfAPropertyAnswerWhatTheScriptAddedFirstDid) {
  const struct {
    HRESULT first, later;
    const wchar_t* drawn;
  } cases[] = {
      {DISP_E_UNKNOWNNAME, E_ACCESSDENIED, L"<code 80020006>[(#:x#)]"},
      {E_ACCESSDENIED, DISP_E_UNKNOWNNAME, L"<code 80070005>[(#:x#)]"},
      {E_ACCESSDENIED, E_ABORT, L"<code 80070005>[(#:x#)]"},
      {E_ABORT, E_ACCESSDENIED, L"<code 80004004>[(#:x#)]"},
  };
  for (const auto& row : cases) {
    refuse(row.first, row.later);
    EXPECT_EQ(row.drawn, draw(L"(#:x#)"));
  }
}

TEST_F(LookUps, GoOnBehindAScriptThatRefuses) {
  refuse(DISP_E_UNKNOWNNAME, E_ACCESSDENIED);
  first()->value(L"x", L"found");
  EXPECT_EQ(L"found", draw(L"(#:x#)"));
  EXPECT_EQ((std::vector<std::wstring>{L"x", L"x"}), asked_of_both());
  asp_.request->query_string->set_raw(L"x", CComVariant(L"put"));
  EXPECT_EQ(S_OK, call(page(), L"PutIntoProp", L"x", false).hr);
  EXPECT_EQ(L"put", draw(L"(#:x#)"));
  first()->function(L"f", [](const Arguments&) { return CComVariant(); });
  EXPECT_TRUE(is_true(call(page(), L"FireEvent", L"f", 1, 1)));
}

TEST_F(LookUps, GoNoFurtherThanTheScriptThatHasTheName) {
  refuse(E_ACCESSDENIED, E_ACCESSDENIED);
  later_->value(L"x", L"found");
  EXPECT_EQ(L"found", draw(L"(#:x#)"));
  EXPECT_TRUE(first()->asked().empty());
}

// A step's function is missing when the script added first says so, whatever others failed with.
TEST_F(LookUps, OfAStepAnswerWhatTheScriptAddedFirstDid) {
  refuse(DISP_E_UNKNOWNNAME, E_ACCESSDENIED);
  process();
  EXPECT_FALSE(is_true(call(page(), L"FireEvent", L"f", 1, 1)));
  asp_.request->query_string->set_raw(L"x", CComVariant(L"put"));
  EXPECT_EQ(DISP_E_UNKNOWNNAME, call(page(), L"PutIntoProp", L"x", false).hr);
  refuse(E_ACCESSDENIED, DISP_E_UNKNOWNNAME);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"FireEvent", L"f", 1, 1).hr);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"PutIntoProp", L"x", false).hr);
}

}  // namespace
}  // namespace test
