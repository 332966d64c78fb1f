// Output, headers, log, links, events by name and arrays.
#include <korlib/adostream.h>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class Output : public PageTest {};

TEST_F(Output, WritesRawOrEncoded) {
  EXPECT_EQ(S_OK, call(page(), L"Write", L"<a>", false).hr);
  EXPECT_EQ(S_OK, call(page(), L"Write", L"<b>", true).hr);
  EXPECT_EQ((fake::Texts{L"<a>", L"«<b>»"}), asp_.response->writes);
}

TEST_F(Output, EncodesForAnyTruthAndNeverAnEmptyText) {
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  EXPECT_EQ(S_OK, typed->Write(CComBSTR(L"x"), 1));
  EXPECT_EQ(S_OK, typed->Write(CComBSTR(L""), VARIANT_TRUE));
  EXPECT_EQ(S_OK, typed->Write(nullptr, VARIANT_TRUE));
  EXPECT_EQ(L"«x»", output());
  EXPECT_EQ(1, asp_.calls->count("Server.HTMLEncode"));
}

TEST_F(Output, EncodesByItselfWhenThePageSaysSo) {
  for (const bool self : {true, false, true}) {
    put(page(), L"SelfEncode", self);
    EXPECT_EQ(S_OK, call(page(), L"Write", L"<\"&", true).hr);
    EXPECT_EQ(S_OK, call(page(), L"Write", L"<", false).hr);
  }
  EXPECT_EQ((fake::Texts{L"&lt;&quot;&amp;", L"<", L"«<\"&»", L"<", L"&lt;&quot;&amp;", L"<"}), asp_.response->writes);
  EXPECT_EQ(1, asp_.calls->count("Server.HTMLEncode"));
}

TEST_F(Output, FailuresOfEncoderAndSinkArePassedOn) {
  asp_.calls->fail("Server.HTMLEncode", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Write", L"x", true).hr);
  EXPECT_EQ(0u, asp_.response->writes.size());
  asp_.calls->fail("Response.Write", E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Write", L"x", false).hr);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"ProcessTemplate", L"x").hr);
}

TEST_F(Output, GoesToAnotherSinkWhenThePageSaysSo) {
  CComPtr<IKorLibStream> stream;
  ASSERT_EQ(S_OK, CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER, korlib::iid_of<IKorLibStream>,
                                   stream.put_void()));
  ASSERT_EQ(S_OK, stream->Open(korlib::omitted(), 0, -1, nullptr, nullptr));
  EXPECT_EQ(S_OK, putref(page(), L"Output", stream).hr);
  EXPECT_EQ(L"", draw(L"to the (#?#) stream"));
  EXPECT_EQ(S_OK, stream->put_Position(0));
  CComBSTR text;
  EXPECT_EQ(S_OK, stream->ReadText(adReadAll, text.put()));
  EXPECT_EQ(L"to the c stream", std::wstring(text.view()));
}

TEST_F(Output, ProcessTemplateDrawsLiteralTextOneCharacterAWrite) {
  draw(L"ab(#?#)^(#");
  EXPECT_EQ((fake::Texts{L"a", L"b", L"c", L"(#"}), asp_.response->writes);
}

TEST_F(Output, ProcessTemplateFiresNoLifecycleEvent) {
  script().function(L"On_StartProcess", [](const Arguments&) { return CComVariant(); });
  script().function(L"On_StartDraw", [](const Arguments&) { return CComVariant(); });
  draw(L"x");
  EXPECT_TRUE(script().calls().empty());
}

TEST_F(Output, ThePageSurvivesGivingUpItsLastReferenceWhileATextIsDrawn) {
  CComPtr<IDispatch> held;
  const CComPtr<FakeScript> own = hold_page_that_leaves(held);
  EXPECT_EQ(S_OK, call(held.get(), L"ProcessTemplate", L"a(#:leave#)b(#:v#)").hr);
  own->forget_calls();
  EXPECT_EQ(L"abv", output());
}

TEST_F(Output, AMarkThatIsNotClosedIsTheEnginesError) {
  const Answer answer = call(page(), L"ProcessTemplate", L"a(#?");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Invalid mark order.", answer.description);
  EXPECT_EQ(L"Templator", answer.source);
}

TEST_F(Output, RedirectSetsStatusAndLocationAndKeepsTheBody) {
  draw(L"body");
  EXPECT_EQ(S_OK, call(page(), L"Redirect", L"next.asp?a=1").hr);
  EXPECT_EQ(L"302 Object moved", asp_.response->status);
  EXPECT_EQ(fake::Texts{L"Location: next.asp?a=1"}, asp_.response->headers);
  EXPECT_EQ(L"body", output());
}

TEST_F(Output, RedirectPassesFailuresOn) {
  asp_.calls->fail("Response.AddHeader", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Redirect", L"x").hr);
  asp_.calls->fail("Response.Status", E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Redirect", L"x").hr);
  EXPECT_EQ(1, asp_.calls->count("Response.AddHeader")) << "the status comes first";
}

TEST_F(Output, AddLogWritesAPair) {
  EXPECT_EQ(S_OK, call(page(), L"AddLog", L"user", L"42").hr);
  EXPECT_EQ(S_OK, call(page(), L"AddLog", L"", L"").hr);
  EXPECT_EQ((fake::Texts{L"[user:42]", L"[:]"}), asp_.response->log);
  asp_.calls->fail("Response.AppendToLog", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"AddLog", L"a", L"b").hr);
}

TEST_F(Output, LinksRunACommandWithParameters) {
  EXPECT_EQ(L"?c=Save&", text_of(call(page(), L"ToCommand", L"Save")));
  EXPECT_EQ(L"?c=%3F%26+%C3%BC&", text_of(call(page(), L"ToCommand", L"?& ü")));
  EXPECT_EQ(L"?c=&", text_of(call(page(), L"ToCommand", L"")));
  EXPECT_EQ(L"a+b=%3D&", text_of(call(page(), L"ToParameter", L"a b", L"=")));
  put(page(), L"CommandName", L"do it");
  EXPECT_EQ(L"?do+it=Save&", text_of(call(page(), L"ToCommand", L"Save")));
  asp_.calls->fail("Server.URLEncode", E_ABORT, 1);
  EXPECT_EQ(E_ABORT, call(page(), L"ToCommand", L"x").hr);
  EXPECT_EQ(E_ABORT, call(page(), L"ToParameter", L"x", L"y").hr);
}

TEST_F(Output, ALinkOfANotBackablePageUsesTheKey) {
  put(page(), L"Backable", false);
  EXPECT_EQ(L"Could not get Command Name. Please specify property 'Name'.",
            call(page(), L"ToCommand", L"x").description);
  with_name();
  process();
  EXPECT_EQ(L"?" + draw(L"(#?#)") + L"=x&", text_of(call(page(), L"ToCommand", L"x")));
}

TEST_F(Output, FireEventCallsByName) {
  CComVariant result(L"before");
  EXPECT_FALSE(is_true(call(page(), L"FireEvent", L"missing", 1, by_reference(&result))));
  EXPECT_EQ(L"before", std::wstring(korlib::view_of(result.bstrVal)));
  Arguments seen;
  script().function(L"f", [&](const Arguments& a) {
    seen = a;
    return CComVariant(L"answer");
  });
  EXPECT_TRUE(is_true(call(page(), L"FireEvent", L"f", 5, by_reference(&result))));
  EXPECT_EQ(L"answer", std::wstring(korlib::view_of(result.bstrVal)));
  ASSERT_EQ(2u, seen.size());
  EXPECT_EQ(page(), seen[0].pdispVal);
  EXPECT_EQ(5, seen[1].lVal);
  seen.clear();
}

TEST_F(Output, FireEventPassesFailuresOnAndLeavesTheResult) {
  CComVariant result(L"before");
  script().failing(L"f", DISP_E_EXCEPTION, L"broken");
  const Answer answer = call(page(), L"FireEvent", L"f", 5, by_reference(&result));
  EXPECT_EQ(DISP_E_EXCEPTION, answer.hr);
  EXPECT_EQ(L"broken", answer.description);
  EXPECT_EQ(L"before", std::wstring(korlib::view_of(result.bstrVal)));
}

TEST_F(Output, FireEventPassesOnALookUpThatFailsOtherwise) {
  script().fail_unknown_names(E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"FireEvent", L"f", 1, 1).hr);
}

TEST_F(Output, FireEventTellsATypedCallerThatTheFunctionExists) {
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  script().failing(L"f", E_ABORT);
  CComVariant argument;
  CComVariant result;
  VARIANT_BOOL exists = 77;
  EXPECT_EQ(E_ABORT, typed->FireEvent(CComBSTR(L"f"), &argument, &result, &exists));
  EXPECT_EQ(VARIANT_TRUE, exists);
  EXPECT_EQ(S_OK, typed->FireEvent(CComBSTR(L"g"), &argument, &result, &exists));
  EXPECT_EQ(VARIANT_FALSE, exists);
}

class Arrays : public PageTest {
 protected:
  static std::wstring element(const Answer& answer, ULONG i) {
    const auto* elements = static_cast<const VARIANT*>(answer.value.parray->pvData);
    return elements[i].vt == VT_BSTR ? std::wstring(korlib::view_of(elements[i].bstrVal)) : L"(empty)";
  }
  CComPtr<IDispatch> list(const fake::Texts& texts) {
    std::vector<CComVariant> values;
    for (const std::wstring& text : texts) values.emplace_back(std::wstring_view(text));
    CComPtr<IDispatch> made;
    made.attach(korlib::make<fake::StringList>(asp_.calls, std::move(values)).detach());
    return made;
  }
};

TEST_F(Arrays, HoldEveryValueOfAList) {
  const Answer answer = call(page(), L"ToArray", list({L"a", L"b", L""}));
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, answer.value.vt);
  ASSERT_EQ(1u, answer.value.parray->cDims);
  EXPECT_EQ(0, answer.value.parray->rgsabound[0].lLbound);
  ASSERT_EQ(3u, answer.value.parray->rgsabound[0].cElements);
  EXPECT_EQ(L"a", element(answer, 0));
  EXPECT_EQ(L"b", element(answer, 1));
  EXPECT_EQ(L"", element(answer, 2));
  EXPECT_EQ(0u, call(page(), L"ToArray", list({})).value.parray->rgsabound[0].cElements);
}

TEST_F(Arrays, LeaveAnItemThatCannotBeReadEmpty) {
  asp_.calls->fail("StringList.Item", E_ABORT, 1);
  const Answer answer = call(page(), L"ToArray", list({L"a", L"b"}));
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, answer.value.vt);
  EXPECT_EQ(L"a", element(answer, 0));
  EXPECT_EQ(L"(empty)", element(answer, 1));
}

TEST_F(Arrays, AreNotMadeOfOtherThings) {
  EXPECT_EQ(E_NOINTERFACE, call(page(), L"ToArray", script_).hr);
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  auto* const marker = reinterpret_cast<SAFEARRAY*>(0x10);
  SAFEARRAY* out = marker;
  EXPECT_EQ(E_NOINTERFACE, typed->ToArray(script_.get(), &out));
  EXPECT_EQ(marker, out);
  asp_.calls->fail("StringList.Count", E_ABORT);
  EXPECT_EQ(S_OK, typed->ToArray(list({L"a"}).get(), &out)) << "a list that cannot be counted";
  EXPECT_EQ(marker, out);
  const Answer late_bound = call(page(), L"ToArray", list({L"a"}));
  EXPECT_EQ(S_OK, late_bound.hr);
  EXPECT_EQ(VT_EMPTY, late_bound.value.vt);
}

}  // namespace
}  // namespace test
