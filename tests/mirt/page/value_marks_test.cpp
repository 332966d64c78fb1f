// Marks that show a value, each with its source and its encoding.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class ValueMarks : public PageTest {};

// What every source must do alike, once its value under "x" is set.
class EverySource : public PageTest {
 protected:
  // Draws "(#" + type + rest + "#)" for the source of that type, whose "x" holds the value.
  std::wstring draw_with(wchar_t type, const std::wstring& rest, const CComVariant& value) {
    std::wstring drawn;
    with_name();
    script().value(L"x", value);
    asp_.session->values()[L"x"] = value;
    asp_.application->values[L"x"] = value;
    in_process([&] {
      call(page(), L"SetView", L"x", value);
      put(object_of(get(page(), L"Bag")).get(), L"Item", L"x", value);
      drawn = draw(std::wstring(L"(#") + type + rest + L"#)");
    });
    return drawn;
  }
  static constexpr std::wstring_view kEncoded = L";*=+&";
  static constexpr std::wstring_view kRaw = L":/~-|";
};

TEST_F(EverySource, WritesEncodedAndRaw) {
  for (const wchar_t type : kEncoded) EXPECT_EQ(L"«<v>»", draw_with(type, L"x", CComVariant(L"<v>"))) << char(type);
  for (const wchar_t type : kRaw) EXPECT_EQ(L"<v>", draw_with(type, L"x", CComVariant(L"<v>"))) << char(type);
}

TEST_F(EverySource, EncodesItselfWhereThePageSaysSo) {
  put(page(), L"SelfEncode", true);
  const std::wstring own = L"&lt;v&gt;";
  for (const wchar_t type : kEncoded) EXPECT_EQ(own, draw_with(type, L"x", CComVariant(L"<v>"))) << char(type);
  EXPECT_EQ(0, asp_.calls->count("Server.HTMLEncode"));
}

TEST_F(EverySource, ShowsAValueThatIsMissingAsNothing) {
  for (const wchar_t type : kRaw.substr(1)) EXPECT_EQ(L"", draw_with(type, L"missing", CComVariant(L"v")));
  EXPECT_EQ(0, asp_.calls->count("Server.HTMLEncode"));
}

TEST_F(EverySource, WalksTheValueByTheMarksArguments) {
  const CComVariant list = value_of(std::vector<CComVariant>{CComVariant(L"zero"), CComVariant(LONG{1})});
  for (const wchar_t type : kRaw) {
    EXPECT_EQ(L"zero", draw_with(type, L"x|0", list));
    EXPECT_EQ(L"1", draw_with(type, L"x|1", list));
    EXPECT_EQ(L"<code 8002000B>[(#" + std::wstring(1, type) + L"x#)]", draw_with(type, L"x|2", list));
    EXPECT_EQ(L"<code 80020005>[(#" + std::wstring(1, type) + L"x#)]", draw_with(type, L"x|0", CComVariant(L"text")));
  }
}

TEST_F(EverySource, FailsOnAValueWithoutATextUnlessNullIsEmpty) {
  for (const wchar_t type : kRaw)
    EXPECT_EQ(L"<code 80020005>[(#" + std::wstring(1, type) + L"x#)]", draw_with(type, L"x", null_value()));
  put(page(), L"NullIsEmpty", true);
  for (const wchar_t type : kRaw) EXPECT_EQ(L"", draw_with(type, L"x", null_value()));
}

TEST_F(EverySource, TakesNamesAsTheyStand) {
  std::wstring name(L"a b'\"<>&.\x1F600-\xD800", 12);
  for (const wchar_t type : kRaw) {
    if (type == L':') continue;
    with_name();
    asp_.session->values()[name] = asp_.application->values[name] = CComVariant(L"v");
    in_process([&] {
      call(page(), L"SetView", name, L"v");
      put(object_of(get(page(), L"Bag")).get(), L"Item", name, L"v");
      EXPECT_EQ(L"v", draw(std::wstring(L"(#") + type + name + L"#)")) << char(type);
    });
    name.insert(1, 1, L'\0');
  }
}

TEST_F(ValueMarks, AScriptFunctionIsCalledWithTheArgumentsAndItsAnswerWritten) {
  Arguments seen;
  script().function(L"f", [&](const Arguments& arguments) {
    seen = arguments;
    return CComVariant(L"<r>");
  });
  EXPECT_EQ(L"«<r>»", draw(L"(#;f|a#|#b#)"));
  ASSERT_EQ(2u, seen.size());
  EXPECT_EQ(page(), seen[0].pdispVal);
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, seen[1].vt);
  const auto* texts = static_cast<const VARIANT*>(seen[1].parray->pvData);
  ASSERT_EQ(2u, seen[1].parray->rgsabound[0].cElements);
  EXPECT_EQ(0, seen[1].parray->rgsabound[0].lLbound);
  EXPECT_EQ(L"a", std::wstring(korlib::view_of(texts[0].bstrVal)));
  EXPECT_EQ(L"b", std::wstring(korlib::view_of(texts[1].bstrVal)));
  EXPECT_EQ(L"<r>", draw(L"(#:f#)"));
  EXPECT_EQ(0u, seen[1].parray->rgsabound[0].cElements);
  seen.clear();
}

TEST_F(ValueMarks, AFunctionsAnswerFollowsNullIsEmpty) {
  script().function(L"nothing", [](const Arguments&) { return CComVariant(); });
  script().function(L"null", [](const Arguments&) { return null_value(); });
  EXPECT_EQ(L"", draw(L"(#:nothing#)"));
  EXPECT_EQ(L"<code 80020005>[(#:null#)]", draw(L"(#:null#)"));
  put(page(), L"NullIsEmpty", true);
  EXPECT_EQ(L"", draw(L"(#:null#)"));
}

TEST_F(ValueMarks, AFunctionMayTurnNullIsEmptyOnForItsOwnAnswer) {
  script().function(L"null", [](const Arguments& a) {
    put(a[0].pdispVal, L"NullIsEmpty", true);
    return null_value();
  });
  EXPECT_EQ(L"", draw(L"(#:null#)"));
}

TEST_F(ValueMarks, AVariableThatCannotBeReadIsNotCalled) {
  script().function(L"x", [](const Arguments&) { return CComVariant(L"called"); });
  script().hide(L"x", E_ACCESSDENIED);
  script().forget_calls();
  EXPECT_EQ(L"<code 80070005>[(#:x#)]", draw(L"(#:x#)"));
  ASSERT_EQ(1u, script().calls().size());
  EXPECT_EQ(DISPATCH_PROPERTYGET, script().calls()[0].flags);
}

TEST_F(ValueMarks, AnUnknownOrFailingScriptMemberQuotesTheMark) {
  EXPECT_EQ(L"<code 80020006>[(#;x#)]", draw(L"(#;x#)"));
  script().failing(L"x", DISP_E_EXCEPTION, L"broken");
  EXPECT_EQ(L"<code 80020009>[(#:x#)]", draw(L"(#:x|p#)"));
  script().failing(L"x", E_FAIL, L"my words");
  EXPECT_EQ(L"<code 80004005>my words", draw(L"(#:x#)"));
}

TEST_F(ValueMarks, WhatWasWrittenBeforeAFailureStays) {
  EXPECT_EQ(L"<code 80020006>[(#;x#)]before ", draw(L"before (#;x#) after"));
}

TEST_F(ValueMarks, AFailureIsRaisedWithTheMarkAndTheSameCode) {
  const Answer answer = call(page(), L"ProcessTemplate", L"(#:x y#)");
  EXPECT_EQ(DISP_E_UNKNOWNNAME, answer.hr);
  EXPECT_EQ(L"[(#:x y#)]", answer.description);
  EXPECT_EQ(L"Mirt", answer.source);
}

TEST_F(ValueMarks, ThereIsNothingToReadOutsideProcess) {
  for (const wchar_t* mark : {L"(#*x#)", L"(#/x#)", L"(#@x#)"}) EXPECT_EQ(L"<code 80004005>", draw(mark));
  EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", draw(L"(#&x#)"));
}

TEST_F(ValueMarks, TheSessionMarkNeedsASession) {
  asp_.without_session();
  EXPECT_EQ(L"<code 80004005>", draw(L"(#=x#)"));
  EXPECT_EQ(L"<code 80004005>", draw(L"(#~x#)"));
}

TEST_F(ValueMarks, WhatTheHostsObjectsFailWithIsQuoted) {
  asp_.calls->fail("Session.Value", E_ACCESSDENIED);
  asp_.calls->fail("Application.Value", E_ABORT);
  EXPECT_EQ(L"<code 80070005>[(#=x#)]", draw(L"(#=x#)"));
  EXPECT_EQ(L"<code 80004004>[(#+x#)]", draw(L"(#+x#)"));
  asp_.calls->fail("Server.HTMLEncode", E_ABORT);
  script().value(L"v", L"text");
  EXPECT_EQ(L"<code 80004004>[(#;v#)]", draw(L"(#;v#)"));
  EXPECT_EQ(L"text", draw(L"(#:v#)"));
}

TEST_F(ValueMarks, ATypeThatNobodyHandlesWritesNothing) {
  EXPECT_EQ(L"ab", draw(L"a(#x#)b"));
  EXPECT_EQ(L"ab", draw(L"a(##)b"));
}

TEST_F(ValueMarks, TheRequestIsSearchedInOrder) {
  const fake::Request& request = *asp_.request;
  const struct {
    fake::RequestDictionary* collection;
    const wchar_t* value;
  } order[] = {
      {request.client_certificate.get(), L"certificate"},
      {request.cookies.get(), L"cookie"},
      {request.form.get(), L"form"},
      {request.query_string.get(), L"query"},
      {request.server_variables.get(), L"server"},
  };
  EXPECT_EQ(L"", draw(L"(#$x#)")) << "no collection knows it";
  for (const auto& row : order) {
    row.collection->set(L"x", {row.value});
    EXPECT_EQ(row.value, draw(L"(#\\x#)"));
    EXPECT_EQ(L"«" + std::wstring(row.value) + L"»", draw(L"(#$x#)"));
  }
}

TEST_F(ValueMarks, ACollectionThatHasNoListOfValuesIsPassedOver) {
  asp_.request->cookies->set(L"x", {L"cookie"});
  fake::RequestDictionary& query = *asp_.request->query_string;
  const CComVariant not_lists[] = {CComVariant(L"text"), CComVariant(static_cast<IDispatch*>(script_.get())),
                                   CComVariant(static_cast<IDispatch*>(nullptr)), CComVariant()};
  for (const CComVariant& value : not_lists) {
    query.set_raw(L"x", value);
    EXPECT_EQ(L"cookie", draw(L"(#\\x#)"));
  }
  query.set(L"x", {});
  EXPECT_EQ(L"cookie", draw(L"(#\\x#)"));
  query.set(L"x", {L"query"});
  for (const char* failing : {"Request.QueryString", "QueryString.Item"}) {
    asp_.calls->fail(failing, E_ABORT);
    EXPECT_EQ(L"cookie", draw(L"(#\\x#)")) << failing;
    asp_.calls->succeed(failing);
  }
}

TEST_F(ValueMarks, ARequestValueIsIndexedByTheMarksArguments) {
  asp_.request->form->set(L"x", {L"a", L"b"});
  EXPECT_EQ(L"a, b", draw(L"(#\\x#)"));
  EXPECT_EQ(L"b", draw(L"(#\\x|2#)"));
  EXPECT_EQ(L"<code 8002000B>[(#\\x#)]", draw(L"(#\\x|3#)"));
}

TEST_F(ValueMarks, TheCommandMarkWritesALinkOrTheFieldsName) {
  EXPECT_EQ(L"«c»", draw(L"(#!#)"));
  EXPECT_EQ(L"c", draw(L"(#?#)"));
  EXPECT_EQ(L"«?c=Save+it&»", draw(L"(#!Save it#)"));
  EXPECT_EQ(L"?c=Save+it&", draw(L"(#?Save it#)"));
  EXPECT_EQ(L"?c=Save&", draw(L"(#?Save|argument#)"));
  EXPECT_EQ(L"c", draw(L"(#?|argument#)"));
  put(page(), L"CommandName", L"do");
  EXPECT_EQ(L"do", draw(L"(#?#)"));
  put(page(), L"Backable", false);
  EXPECT_EQ(L"<code 80004005>Could not get Command Name. Please specify property 'Name'.", draw(L"(#?#)"));
  EXPECT_EQ(L"<code 80004005>Could not get Command Name. Please specify property 'Name'.", draw(L"(#?Save#)"));
}

TEST_F(ValueMarks, ChildMarksDrawTheirTemplates) {
  use_folder();
  file("child.html", "[(#:v#)]");
  script().value(L"v", L"value");
  EXPECT_EQ(L"a[value]b", draw(L"a(#`child#)b"));
  in_process([&] {
    EXPECT_EQ(S_OK, put(object_of(get(page(), L"Include")).get(), L"Item", L"place", L"child").hr);
    put(object_of(get(page(), L"Include")).get(), L"Item", L"number", 5);
    EXPECT_EQ(L"[value]", draw(L"(#@place#)"));
    EXPECT_EQ(L"", draw(L"(#@number#)"));
    EXPECT_EQ(L"", draw(L"(#@missing#)"));
  });
}

TEST_F(ValueMarks, ChildMarksFailAsTheirTemplatesDo) {
  use_folder();
  file("bad.html", "a(#:missing#)");
  EXPECT_EQ(L"<code 80020006>[(#`bad#)]a", draw(L"(#`bad#)b"));
  const std::wstring refused = L"<code 80004005>Template file ";
  EXPECT_EQ(refused, draw(L"(#`../none#)").substr(0, refused.size()));
  in_process([&] {
    put(object_of(get(page(), L"Include")).get(), L"Item", L"place", L"bad");
    EXPECT_EQ(L"<code 80020006>[(#@place#)]a", draw(L"(#@place#)b"));
  });
}

TEST_F(ValueMarks, AScriptMayReplaceEverythingWhileAMarkIsDrawn) {
  with_name();
  script().function(L"f", [this](const Arguments& a) {
    IDispatch* self = a[0].pdispVal;
    script().remove(L"On_EndDraw");
    put(self, L"Command", L"");
    EXPECT_EQ(S_OK, call(self, L"Process").hr);  // takes View and Include away
    putref(self, L"Output", CComPtr<IUnknown>(object_of(get(self, L"Script")).get()));
    return CComVariant(L"x");
  });
  const std::wstring drawn = draw_in_process(L"(#/v#)(#:f#)");
  EXPECT_EQ(L"<code 80004005>", drawn.substr(0, 15));
}

}  // namespace
}  // namespace test
