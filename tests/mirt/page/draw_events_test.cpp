// Draw events: the script's, and the built-in ones.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

std::wstring refused(const std::wstring& event) {
  return L"<code 80004005>Invalid OnDraw_" + event + L" param length.";
}

class DrawEvents : public PageTest {};

TEST_F(DrawEvents, AScriptFunctionGetsThePageAndTheArgumentsAndWritesItself) {
  Arguments seen;
  script().function(L"OnDraw_Row", [&](const Arguments& arguments) {
    seen = arguments;
    call(arguments[0].pdispVal, L"Write", L"<w>", false);
    return CComVariant(L"not written");
  });
  EXPECT_EQ(L"a<w>b", draw(L"a(#%Row|1#|#(#%in#)#)b"));
  ASSERT_EQ(2u, seen.size());
  EXPECT_EQ(page(), seen[0].pdispVal);
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, seen[1].vt);
  ASSERT_EQ(2u, seen[1].parray->rgsabound[0].cElements);
  const auto* texts = static_cast<const VARIANT*>(seen[1].parray->pvData);
  EXPECT_EQ(L"1", std::wstring(korlib::view_of(texts[0].bstrVal)));
  EXPECT_EQ(L"(#%in#)", std::wstring(korlib::view_of(texts[1].bstrVal)));
  seen.clear();
}

TEST_F(DrawEvents, NobodyToDrawIsAnError) {
  const Answer answer = call(page(), L"ProcessTemplate", L"(#%Row#)");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Event 'OnDraw_Row' not found.", answer.description);
  EXPECT_EQ(L"Mirt", answer.source);
  EXPECT_EQ(L"<code 80004005>Event 'OnDraw_' not found.", draw(L"(#%#)"));
  EXPECT_EQ(L"<code 80004005>Event 'OnDraw__inputs' not found.", draw(L"(#%_inputs#)"));
}

TEST_F(DrawEvents, ALookUpThatFailsOtherwiseIsNoFunctionEither) {
  script().fail_unknown_names(E_ACCESSDENIED);
  EXPECT_EQ(refused(L"_Input"), draw(L"(#%_Input#)"));
  EXPECT_EQ(L"<code 80004005>Event 'OnDraw_Row' not found.", draw(L"(#%Row#)"));
}

TEST_F(DrawEvents, AFailingFunctionQuotesTheMark) {
  script().failing(L"OnDraw_Row", DISP_E_EXCEPTION, L"broken");
  EXPECT_EQ(L"<code 80020009>[(#%Row#)]", draw(L"(#%Row#)"));
}

TEST_F(DrawEvents, BuiltInsAreFoundInAnyCaseAndGiveWayToTheScript) {
  EXPECT_EQ(refused(L"_InputDefault"), draw(L"(#%_INPUTdefault#)"));
  script().function(L"OnDraw__INPUTdefault", [](const Arguments&) { return CComVariant(); });
  EXPECT_EQ(L"", draw(L"(#%_INPUTdefault#)"));
  EXPECT_EQ(refused(L"_InputDefault"), draw(L"(#%_InputDefault#)"));
}

TEST_F(DrawEvents, BuiltInsAreFoundByTheirWholeName) {
  for (const wchar_t* name : {L"_Inpu", L"_Inputx", L"?Input"})
    EXPECT_EQ(std::wstring(L"<code 80004005>Event 'OnDraw_") + name + L"' not found.",
              draw(std::wstring(L"(#%") + name + L"#)"));
  // The error's text ends at the NUL, the name does not.
  EXPECT_EQ(L"<code 80004005>Event 'OnDraw__Input", draw(std::wstring(L"(#%_Input\0x#)", 13)));
}

TEST_F(DrawEvents, BuiltInsCountTheirArguments) {
  const struct {
    const wchar_t* event;
    int least, most;
  } cases[] = {{L"_InputDefault", 4, 4},   {L"_InputDefaultV", 4, 4}, {L"_InputDefaultP", 4, 4},  {L"_Input", 2, 3},
               {L"_Input_Default", 2, 2},  {L"_InputV", 2, 3},        {L"_InputV_Default", 2, 2}, {L"_InputP", 2, 3},
               {L"_InputP_Default", 2, 2}, {L"_Message", 1, 3}};
  for (const auto& row : cases) {
    std::wstring mark = std::wstring(L"(#%") + row.event;
    for (int count = 0; count < 6; ++count) {
      const bool accepted = count >= row.least && count <= row.most;
      const Answer answer = call(page(), L"ProcessTemplate", mark + L"#)");
      EXPECT_EQ(accepted, answer.description != L"Invalid OnDraw_" + std::wstring(row.event) + L" param length.")
          << testing::PrintToString(mark);
      if (!accepted) {
        EXPECT_EQ(E_FAIL, answer.hr);
        EXPECT_EQ(L"Mirt", answer.source);
      }
      mark += L"#|#p";
    }
  }
}

// The three kinds of input drawer, which differ in where the bound value is.
struct Kind {
  const wchar_t* suffix;  // "", "V" or "P"
};

class InputDrawers : public PageTest, public testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override { with_name(); }
  // The event's mark up to its arguments: "(#%_Input" + suffix + tail.
  std::wstring mark(const std::wstring& tail) const { return L"(#%_Input" + suffix() + tail; }
  std::wstring default_mark(const std::wstring& arguments) const {
    return L"(#%_InputDefault" + suffix() + L"|" + arguments + L"#)";
  }
  std::wstring suffix() const { return GetParam().suffix; }
  void bind(const std::wstring& name, const CComVariant& value) {
    if (suffix() == L"V") {
      EXPECT_EQ(S_OK, call(page(), L"SetView", name, value).hr);
    } else if (suffix() == L"P") {
      script().value(name, value);
    } else {
      EXPECT_EQ(S_OK, put(object_of(get(page(), L"Bag")).get(), L"Item", name, value).hr);
    }
  }
  CComVariant view_item(const std::wstring& name) {
    const CComPtr<IDispatch> view = object_of(get(page(), L"View"));
    if (!is_true(call(view.get(), L"Exists", name))) return CComVariant(L"(gone)");
    return get(view.get(), L"Item", name).value;
  }
  std::wstring view_text(const std::wstring& name) {
    CComVariant item = view_item(name);
    return SUCCEEDED(item.change_type(VT_BSTR)) ? std::wstring(korlib::view_of(item.bstrVal)) : L"(no text)";
  }
};

INSTANTIATE_TEST_SUITE_P(Sources, InputDrawers, testing::Values(Kind{L""}, Kind{L"V"}, Kind{L"P"}),
                         [](const testing::TestParamInfo<Kind>& param) {
                           const std::wstring suffix = param.param.suffix;
                           return suffix.empty() ? "Bag" : suffix == L"V" ? "View" : "Script";
                         });

CComVariant typed_array(VARTYPE type, std::vector<LONG> numbers) {
  CComVariant value;
  CComSafeArray array(type, static_cast<ULONG>(numbers.size()));
  for (std::size_t i = 0; i < numbers.size(); ++i) array.data<LONG>()[i] = numbers[i];
  array.detach_to(&value);
  return value;
}

CComVariant matrix_of_texts() {
  const SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 5}};
  CComVariant value;
  value.vt = VT_ARRAY | VT_BSTR;
  value.parray = SafeArrayCreate(VT_BSTR, 2, bounds);
  const LONG last[] = {1, 6};
  SafeArrayPutElement(value.parray, last, CComBSTR(L"v"));
  return value;
}

TEST_P(InputDrawers, ChooseTheTextThatMatches) {
  const CComVariant texts = value_of(std::vector<CComVariant>{CComVariant(L"u"), CComVariant(L"v")});
  const CComVariant mixed = value_of(std::vector<CComVariant>{null_value(), CComVariant(LONG{7}), CComVariant(L"v")});
  const struct {
    CComVariant bound;
    const wchar_t* input;
    bool matches;
  } cases[] = {
      {CComVariant(L"v"), L"v", true},
      {CComVariant(L"V"), L"v", false},
      {CComVariant(L"v "), L"v", false},
      {CComVariant(L""), L"", true},
      {CComVariant(), L"", true},
      {CComVariant(LONG{7}), L"7", true},
      {CComVariant(true), L"True", true},
      {texts, L"v", true},
      {texts, L"u", true},
      {texts, L"u, v", false},
      {mixed, L"v", true},
      {mixed, L"7", true},
      {mixed, L"", false},
      {value_of(std::vector<CComVariant>{}), L"", false},
      {typed_array(VT_I4, {1, 2}), L"2", true},
      {typed_array(VT_I4, {1, 2}), L"3", false},
      {matrix_of_texts(), L"v", true},
      {matrix_of_texts(), L"", true},
      {value_of(std::vector<std::uint8_t>{65, 66}), L"66", true},
  };
  in_process([&] {
    for (const auto& row : cases) {
      bind(L"n", row.bound);
      EXPECT_EQ(row.matches ? L"yes" : L"no", draw(default_mark(std::wstring(L"n#|#") + row.input + L"#|#yes#|#no")))
          << testing::PrintToString(row.bound) << " " << testing::PrintToString(std::wstring(row.input));
    }
  });
}

TEST_P(InputDrawers, FailOnABoundValueWithoutAText) {
  in_process([&] {
    bind(L"n", null_value());
    EXPECT_EQ(L"<code 80020005>[(#%_InputDefault" + suffix() + L"#)]", draw(default_mark(L"n#|#v#|#yes#|#no")));
  });
}

TEST_P(InputDrawers, ATextMayHoldMarks) {
  script().value(L"other", CComVariant(L"drawn"));
  in_process([&] {
    bind(L"n", CComVariant(L"v"));
    EXPECT_EQ(L"[drawn]", draw(default_mark(L"n#|#v#|#[(#:other#)]#|#no")));
    EXPECT_EQ(L"inner", draw(default_mark(L"n#|#x#|#no#|#" + default_mark(L"n#|#v#|#inner#|#no"))));
  });
}

TEST_P(InputDrawers, ANameThatIsNotBound) {
  in_process([&] {
    const std::wstring drawn = draw(default_mark(L"missing#|##|#yes#|#no"));
    EXPECT_EQ(suffix() == L"P" ? L"<code 80020006>[(#%_InputDefaultP#)]" : L"yes", drawn);
    EXPECT_EQ(L"(gone)", view_text(L"missing")) << "looking does not make it";
  });
}

TEST_P(InputDrawers, GiveNameAndValueToTheTextsInside) {
  const std::wstring name = L"_Input" + suffix() + L"_Name";
  const std::wstring value = L"_Input" + suffix() + L"_Value";
  in_process([&] {
    bind(L"n", CComVariant(L"<v>"));
    EXPECT_EQ(L"n=<v>", draw(mark(L"|n#|#(#/" + name + L"#)=(#/" + value + L"#)#)")));
    EXPECT_EQ(L"match", draw(mark(L"|n#|#" + mark(L"_Default|no#|#match#)") + L"#)")));
    EXPECT_EQ(L"(gone)", view_text(name));
    EXPECT_EQ(L"(gone)", view_text(value));
  });
}

TEST_P(InputDrawers, TheTextsInsideComeInTheOtherOrder) {
  in_process([&] {
    bind(L"n", CComVariant(L"v"));
    call(page(), L"SetView", L"_Input" + suffix() + L"_Name", L"n");
    call(page(), L"SetView", L"_Input" + suffix() + L"_Value", L"other");
    EXPECT_EQ(L"not", draw(mark(L"_Default|not#|#match#)")));
    call(page(), L"SetView", L"_Input" + suffix() + L"_Value", L"v");
    EXPECT_EQ(L"match", draw(mark(L"_Default|not#|#match#)")));
    bind(L"n", value_of(std::vector<CComVariant>{CComVariant(L"u"), CComVariant(L"v")}));
    EXPECT_EQ(L"match", draw(mark(L"_Default|not#|#match#)")));
  });
}

TEST_P(InputDrawers, NeedATextForNameAndValue) {
  in_process([&] {
    bind(L"", CComVariant(L""));
    for (const wchar_t* item : {L"_Name", L"_Value"}) {
      const std::wstring key = L"_Input" + suffix() + item;
      call(page(), L"SetView", key, null_value());
      EXPECT_EQ(L"<code 80020005>[(#%_Input" + suffix() + L"_Default#)]", draw(mark(L"_Default|not#|#match#)")));
      call(page(), L"SetView", key, L"");
    }
  });
}

TEST_P(InputDrawers, DrawTheThirdTextWhereNothingIsBound) {
  in_process([&] {
    EXPECT_EQ(L"none", draw(mark(L"|n#|#some#|#none#)")));
    bind(L"n", CComVariant());
    EXPECT_EQ(L"some", draw(mark(L"|n#|#some#|#none#)")));
  });
}

TEST_P(InputDrawers, DrawTheSecondTextWithAnEmptyValueWhereNothingIsBound) {
  in_process([&] {
    const std::wstring drawn = draw(mark(L"|n#|#[(#/_Input" + suffix() + L"_Value#)]#)"));
    EXPECT_EQ(suffix() == L"P" ? L"<code 80020006>[(#%_InputP#)]" : L"[]", drawn);
  });
}

TEST_P(InputDrawers, GiveTheValueAsItIs) {
  in_process([&] {
    bind(L"n", value_of(std::vector<CComVariant>{CComVariant(L"u"), CComVariant(L"v")}));
    EXPECT_EQ(L"uv", draw(mark(L"|n#|#(#/_Input" + suffix() + L"_Value|0#)(#/_Input" + suffix() + L"_Value|1#)#)")));
  });
}

TEST_P(InputDrawers, NestAndPutBackWhatWasThere) {
  const std::wstring name = L"_Input" + suffix() + L"_Name";
  const std::wstring shown = L"(#/" + name + L"#)";
  in_process([&] {
    bind(L"a", CComVariant(L"1"));
    bind(L"b", CComVariant(L"2"));
    call(page(), L"SetView", name, L"mine");
    EXPECT_EQ(L"aba", draw(mark(L"|a#|#" + shown + mark(L"|b#|#" + shown + L"#)") + shown + L"#)")));
    EXPECT_EQ(L"mine", view_text(name));
    EXPECT_EQ(L"(gone)", view_text(L"_Input" + suffix() + L"_Value"));
  });
}

TEST_P(InputDrawers, PutBackWhatWasThereAfterAFailureToo) {
  const std::wstring name = L"_Input" + suffix() + L"_Name";
  in_process([&] {
    bind(L"a", CComVariant(L"1"));
    EXPECT_EQ(L"<code 80020006>[(#%_Input" + suffix() + L"#)]", draw(mark(L"|a#|#(#:missing#)#)")));
    EXPECT_EQ(L"(gone)", view_text(name));
  });
}

TEST_P(InputDrawers, NeedAProcessForTheView) {
  script().value(L"n", CComVariant(L"v"));
  EXPECT_EQ(L"<code 80004005>", draw(mark(L"|n#|#t#)")).substr(0, 15));
  EXPECT_EQ(L"<code 80004005>", draw(mark(L"_Default|a#|#b#)")).substr(0, 15));
}

TEST_P(InputDrawers, AScriptMayTakeTheViewAwayInTheMiddle) {
  script().function(L"again", [this](const Arguments& a) {
    script().remove(L"On_EndDraw");
    EXPECT_EQ(S_OK, call(a[0].pdispVal, L"Process").hr);
    return CComVariant(L"x");
  });
  in_process([&] {
    bind(L"n", CComVariant(L"v"));
    EXPECT_EQ(L"x", draw(mark(L"|n#|#(#:again#)#)")));
  });
}

TEST_F(DrawEvents, InputDrawersOfTheBagNeedAName) {
  in_process([&] {
    EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", draw(L"(#%_Input|n#|#t#)"));
    EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.",
              draw(L"(#%_InputDefault|n#|#v#|#a#|#b#)"));
  });
}

TEST_F(DrawEvents, AVariableThatIsAFunctionCannotBeBound) {
  script().function(L"f", [](const Arguments&) { return CComVariant(L"v"); });
  EXPECT_EQ(L"<code 80020003>[(#%_InputDefaultP#)]", draw(L"(#%_InputDefaultP|f#|#v#|#a#|#b#)"));
}

TEST_F(DrawEvents, AVariableMayAnswerWithAReference) {
  CComVariant list = value_of(std::vector<CComVariant>{CComVariant(L"u"), CComVariant(L"v")});
  CComVariant reference;
  reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
  reference.pparray = &list.parray;
  script().value(L"n", reference);
  EXPECT_EQ(L"yes", draw(L"(#%_InputDefaultP|n#|#v#|#yes#|#no#)"));
  EXPECT_EQ(L"no", draw(L"(#%_InputDefaultP|n#|#x#|#yes#|#no#)"));
  script().value(L"n", by_reference(&list));
  EXPECT_EQ(L"yes", draw(L"(#%_InputDefaultP|n#|#u#|#yes#|#no#)"));
  script().remove(L"n");
}

TEST_F(DrawEvents, ALookUpOfAVariableThatFailsOtherwiseIsPassedOn) {
  in_process([&] {
    script().fail_unknown_names(E_ACCESSDENIED);
    EXPECT_EQ(L"<code 80070005>[(#%_InputP#)]", draw(L"(#%_InputP|n#|#t#|#none#)"));
    EXPECT_EQ(L"<code 80070005>[(#%_InputDefaultP#)]", draw(L"(#%_InputDefaultP|n#|#v#|#a#|#b#)"));
    script().fail_unknown_names(DISP_E_UNKNOWNNAME);
  });
}

// Each level of the text is the "text if not" of the one around it.
std::wstring nested(int levels) {
  std::wstring text;
  for (int i = 0; i < levels; ++i) text += L"(#%_InputDefaultP|n#|#x#|##|#";
  text += L"core";
  for (int i = 0; i < levels; ++i) text += L"#)";
  return text;
}

TEST_F(DrawEvents, TextsNestSoFarAndFailCleanlyBeyond) {
  script().value(L"n", CComVariant(L"v"));
  EXPECT_EQ(L"core", draw(nested(256)));
  EXPECT_EQ(L"<code 80004005>Template text is nested too deeply.", draw(nested(257)));
  EXPECT_EQ(L"core", draw(nested(256))) << "the depth is counted anew";
}

TEST_F(DrawEvents, ManyLevelsInOneMarkAreText) {
  std::wstring text = L"(#%f|";
  for (int i = 0; i < 10000; ++i) text += L"(#";
  for (int i = 0; i < 10000; ++i) text += L"#)";
  std::size_t length = 0;
  script().function(L"OnDraw_f", [&](const Arguments& a) {
    length = SysStringLen(static_cast<const VARIANT*>(a[1].parray->pvData)->bstrVal);
    return CComVariant();
  });
  EXPECT_EQ(L"", draw(text + L"#)"));
  EXPECT_EQ(40000u, length);
  EXPECT_EQ(L"<code 80004005>Invalid mark order.", draw(text));
}

class Messages : public PageTest {
 protected:
  bool exists(const CComVariant& key) { return is_true(call(page(), L"MessageExists", key)); }
};

TEST_F(Messages, ExistOnceAdded) {
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

TEST_F(Messages, AreDrawnInOrderEachWithItsText) {
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

TEST_F(Messages, ATextIsItselfATemplate) {
  script().value(L"v", CComVariant(L"drawn"));
  call(page(), L"AddMessage", L"a(#:v#)b", L"");
  EXPECT_EQ(L"adrawnb", draw(L"(#%_Message|(#%_Message_Text|ignored#)#)"));
  EXPECT_EQ(L"drawn", draw(L"(#%_Message|none#|#x#|#(#:v#)#)"));
}

TEST_F(Messages, ANumberChoosesOneOfTheTexts) {
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

TEST_F(Messages, ThereIsACurrentOneOnlyWhileItIsDrawn) {
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
  call(page(), L"AddMessage", L"m", L"");
  EXPECT_EQ(L"m", draw(L"(#%_Message|(#%_Message_Text#)#)"));
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
  EXPECT_EQ(L"<code 80020006>", draw(L"(#%_Message|(#:missing#)#)").substr(0, 15));
  EXPECT_EQ(L"<code 80004005>", draw(L"(#%_Message_Text#)"));
}

TEST_F(Messages, DrawingStopsAtTheFirstFailure) {
  call(page(), L"AddMessage", L"one", L"");
  call(page(), L"AddMessage", 5, L"");
  call(page(), L"AddMessage", L"three", L"");
  EXPECT_EQ(L"<code 80004005>Invalid OnDraw__Message_Text param length.one", draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

TEST_F(Messages, DrawersNest) {
  call(page(), L"AddMessage", L"outer", L"");
  call(page(), L"AddMessage", L"inner", L"k");
  EXPECT_EQ(L"outer inner outer",
            draw(L"(#%_Message|(#%_Message_Text#) (#%_Message|k#|#(#%_Message_Text#)#) (#%_Message_Text#)#)"));
}

TEST_F(Messages, OnesAddedWhileDrawingWaitForTheNextDrawing) {
  call(page(), L"AddMessage", L"one", L"");
  script().function(L"OnDraw_more", [](const Arguments& a) {
    for (int i = 0; i < 100; ++i) call(a[0].pdispVal, L"AddMessage", L"m", L"");
    return CComVariant();
  });
  EXPECT_EQ(L"one", draw(L"(#%_Message|(#%more#)(#%_Message_Text#)#)"));
  EXPECT_EQ(L"one" + std::wstring(100, L'm'), draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

TEST_F(Messages, KeepACopyOfWhatWasAdded) {
  CComVariant variable(L"then");
  call(page(), L"AddMessage", by_reference(&variable), L"");
  variable = CComVariant(L"now");
  EXPECT_EQ(L"then", draw(L"(#%_Message|(#%_Message_Text#)#)"));
}

}  // namespace
}  // namespace test
