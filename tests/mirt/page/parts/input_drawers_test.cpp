#include "page/input_drawers.h"

#include "mirt/page/dictionary_class.h"
#include "mirt/page/parts/parts_fixture.h"

namespace test {
namespace {

class InputDrawers : public PartsTest {
 protected:
  InputDrawers() { EXPECT_EQ(S_OK, dictionaries_.make()); }
  void bind(const wchar_t* name, const CComVariant& value) { set_item(dictionaries_.view.get(), name, value); }
  std::wstring default_of(page::BoundTo source, const wchar_t* value) {
    EXPECT_EQ(S_OK, inputs_.draw_default(source, Params{L"n", value, L"yes", L"no"}));
    return drawn();
  }

  page::Memory memory_{asp_};
  page::Dictionaries dictionaries_;
  page::NestedTexts texts_{engine_};
  page::InputDrawers inputs_{scripts_, memory_, dictionaries_, texts_};
};

TEST_F(InputDrawers, CompareWithTheValueOfTheirSource) {
  bind(L"n", CComVariant(LONG{12}));
  script_->value(L"n", L"script");
  memory_.name = CComBSTR(L"p");
  bool is_new = false;
  ASSERT_EQ(S_OK, memory_.bind(&is_new));
  CComPtr<IKorLibDictionary> bag;
  ASSERT_EQ(S_OK, memory_.get_bag(&bag));
  set_item(bag.get(), L"n", value_of(std::vector<CComVariant>{CComVariant(L"x"), CComVariant(LONG{7})}));
  EXPECT_EQ(L"yes", default_of(page::BoundTo::view, L"12"));
  EXPECT_EQ(L"no", default_of(page::BoundTo::view, L"7"));
  EXPECT_EQ(L"yes", default_of(page::BoundTo::script, L"script"));
  EXPECT_EQ(L"no", default_of(page::BoundTo::script, L"Script"));
  EXPECT_EQ(L"yes", default_of(page::BoundTo::bag, L"7"));
  EXPECT_EQ(L"no", default_of(page::BoundTo::bag, L"12"));
}

TEST_F(InputDrawers, TellNameAndValueToTheTextInside) {
  bind(L"n", CComVariant(L"v"));
  bind(L"_InputV_Name", CComVariant(L"outer"));
  engine_.on_mark = [this](const Mark&) {
    EXPECT_EQ(L"n", item(dictionaries_.view.get(), L"_InputV_Name"));
    EXPECT_EQ(L"v", item(dictionaries_.view.get(), L"_InputV_Value"));
    return inputs_.draw_inner_default(page::BoundTo::view, Params{L"no", L"yes"});
  };
  EXPECT_EQ(S_OK, inputs_.draw_input(page::BoundTo::view, Params{L"n", L"<(#x#)>"}));
  EXPECT_EQ(L"<yes>", drawn());
  EXPECT_EQ(L"outer", item(dictionaries_.view.get(), L"_InputV_Name"));
  EXPECT_EQ(L"(none)", item(dictionaries_.view.get(), L"_InputV_Value"));
  engine_.on_mark = [](const Mark&) { return E_ABORT; };
  EXPECT_EQ(E_ABORT, inputs_.draw_input(page::BoundTo::view, Params{L"n", L"<(#x#)>"}));
  EXPECT_EQ(L"outer", item(dictionaries_.view.get(), L"_InputV_Name"));
}

TEST_F(InputDrawers, DrawAnotherTextWhereNothingHasTheName) {
  EXPECT_EQ(S_OK, inputs_.draw_input(page::BoundTo::view, Params{L"n", L"text", L"none"}));
  EXPECT_EQ(S_OK, inputs_.draw_input(page::BoundTo::script, Params{L"n", L"text", L"none"}));
  EXPECT_EQ(L"nonenone", drawn());
  EXPECT_EQ(DISP_E_UNKNOWNNAME, inputs_.draw_input(page::BoundTo::script, Params{L"n", L"text"}));
  EXPECT_EQ(DISP_E_UNKNOWNNAME, inputs_.draw_default(page::BoundTo::script, Params{L"n", L"", L"", L""}));
  EXPECT_EQ(L"(none)", item(dictionaries_.view.get(), L"n")) << "looking makes no item";
}

TEST_F(InputDrawers, NeedTheView) {
  dictionaries_.drop();
  EXPECT_EQ(E_FAIL, inputs_.draw_input(page::BoundTo::view, Params{L"n", L"text"}));
  EXPECT_EQ(E_FAIL, inputs_.draw_inner_default(page::BoundTo::script, Params{L"no", L"yes"}));
  EXPECT_EQ(E_FAIL, inputs_.draw_default(page::BoundTo::view, Params{L"n", L"v", L"yes", L"no"}));
}

TEST(Dictionaries, AreBothMadeAnewOrLeft) {
  page::Dictionaries dictionaries;
  ASSERT_EQ(S_OK, dictionaries.make());
  const page::Dictionaries before = dictionaries;
  {
    DictionaryClass host;
    host.fail(E_ABORT, 1);
    EXPECT_EQ(E_ABORT, dictionaries.make());
  }
  EXPECT_EQ(before.view, dictionaries.view);
  EXPECT_EQ(before.include, dictionaries.include);
  ASSERT_EQ(S_OK, dictionaries.make());
  EXPECT_FALSE(before.view == dictionaries.view);
  dictionaries.drop();
  EXPECT_FALSE(dictionaries.view || dictionaries.include);
}

}  // namespace
}  // namespace test
