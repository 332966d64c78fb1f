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

}  // namespace
}  // namespace test
