// Marks that let form inputs show what is bound to them.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

// The three kinds of input drawer, which differ in where the bound value is.
struct Kind {
  const wchar_t* suffix;  // "", "V" or "P"
};

class InputMarks : public PageTest, public testing::WithParamInterface<Kind> {
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

INSTANTIATE_TEST_SUITE_P(Sources, InputMarks, testing::Values(Kind{L""}, Kind{L"V"}, Kind{L"P"}),
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

TEST_P(InputMarks, ChooseTheTextThatMatches) {
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

TEST_P(InputMarks, FailOnABoundValueWithoutAText) {
  in_process([&] {
    bind(L"n", null_value());
    EXPECT_EQ(L"<code 80020005>[(#%_InputDefault" + suffix() + L"#)]", draw(default_mark(L"n#|#v#|#yes#|#no")));
  });
}

TEST_P(InputMarks, ATextMayHoldMarks) {
  script().value(L"other", CComVariant(L"drawn"));
  in_process([&] {
    bind(L"n", CComVariant(L"v"));
    EXPECT_EQ(L"[drawn]", draw(default_mark(L"n#|#v#|#[(#:other#)]#|#no")));
    EXPECT_EQ(L"inner", draw(default_mark(L"n#|#x#|#no#|#" + default_mark(L"n#|#v#|#inner#|#no"))));
  });
}

TEST_P(InputMarks, ANameThatIsNotBound) {
  in_process([&] {
    const std::wstring drawn = draw(default_mark(L"missing#|##|#yes#|#no"));
    EXPECT_EQ(suffix() == L"P" ? L"<code 80020006>[(#%_InputDefaultP#)]" : L"yes", drawn);
    EXPECT_EQ(L"(gone)", view_text(L"missing")) << "looking does not make it";
  });
}

TEST_P(InputMarks, GiveNameAndValueToTheTextsInside) {
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

TEST_P(InputMarks, TheTextsInsideComeInTheOtherOrder) {
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

TEST_P(InputMarks, NeedATextForNameAndValue) {
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

TEST_P(InputMarks, DrawTheThirdTextWhereNothingIsBound) {
  in_process([&] {
    EXPECT_EQ(L"none", draw(mark(L"|n#|#some#|#none#)")));
    bind(L"n", CComVariant());
    EXPECT_EQ(L"some", draw(mark(L"|n#|#some#|#none#)")));
  });
}

TEST_P(InputMarks, DrawTheSecondTextWithAnEmptyValueWhereNothingIsBound) {
  in_process([&] {
    const std::wstring drawn = draw(mark(L"|n#|#[(#/_Input" + suffix() + L"_Value#)]#)"));
    EXPECT_EQ(suffix() == L"P" ? L"<code 80020006>[(#%_InputP#)]" : L"[]", drawn);
  });
}

TEST_P(InputMarks, GiveTheValueAsItIs) {
  in_process([&] {
    bind(L"n", value_of(std::vector<CComVariant>{CComVariant(L"u"), CComVariant(L"v")}));
    EXPECT_EQ(L"uv", draw(mark(L"|n#|#(#/_Input" + suffix() + L"_Value|0#)(#/_Input" + suffix() + L"_Value|1#)#)")));
  });
}

TEST_P(InputMarks, NestAndPutBackWhatWasThere) {
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

TEST_P(InputMarks, PutBackWhatWasThereAfterAFailureToo) {
  const std::wstring name = L"_Input" + suffix() + L"_Name";
  in_process([&] {
    bind(L"a", CComVariant(L"1"));
    EXPECT_EQ(L"<code 80020006>[(#%_Input" + suffix() + L"#)]", draw(mark(L"|a#|#(#:missing#)#)")));
    EXPECT_EQ(L"(gone)", view_text(name));
  });
}

TEST_P(InputMarks, NeedAProcessForTheView) {
  script().value(L"n", CComVariant(L"v"));
  EXPECT_EQ(L"<code 80004005>", draw(mark(L"|n#|#t#)")).substr(0, 15));
  EXPECT_EQ(L"<code 80004005>", draw(mark(L"_Default|a#|#b#)")).substr(0, 15));
}

TEST_P(InputMarks, AScriptMayTakeTheViewAwayInTheMiddle) {
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

class InputMarksOfOneKind : public PageTest {};

TEST_F(InputMarksOfOneKind, NeedANameForTheBag) {
  in_process([&] {
    EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", draw(L"(#%_Input|n#|#t#)"));
    EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.",
              draw(L"(#%_InputDefault|n#|#v#|#a#|#b#)"));
  });
}

TEST_F(InputMarksOfOneKind, AVariableThatIsAFunctionCannotBeBound) {
  script().function(L"f", [](const Arguments&) { return CComVariant(L"v"); });
  EXPECT_EQ(L"<code 80020003>[(#%_InputDefaultP#)]", draw(L"(#%_InputDefaultP|f#|#v#|#a#|#b#)"));
}

TEST_F(InputMarksOfOneKind, AVariableMayAnswerWithAReference) {
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

TEST_F(InputMarksOfOneKind, ALookUpOfAVariableThatFailsOtherwiseIsPassedOn) {
  in_process([&] {
    script().fail_unknown_names(E_ACCESSDENIED);
    EXPECT_EQ(L"<code 80070005>[(#%_InputP#)]", draw(L"(#%_InputP|n#|#t#|#none#)"));
    EXPECT_EQ(L"<code 80070005>[(#%_InputDefaultP#)]", draw(L"(#%_InputDefaultP|n#|#v#|#a#|#b#)"));
    script().fail_unknown_names(DISP_E_UNKNOWNNAME);
  });
}

}  // namespace
}  // namespace test
