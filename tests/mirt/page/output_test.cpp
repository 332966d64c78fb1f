// Output, headers, log, links, events by name, arrays and the objects that a page makes.
#include <algorithm>

#include <korlib/adostream.h>
#include <korlib/dbcommand.h>
#include <korlib_host/class_table.h>

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

// A database command that shows what it was told, and fails where it should.
class Command final : public korlib::DispatchObject<Command, IKorDBCommand> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT put_ActiveConnection(VARIANT connection) override {
    log.emplace_back(L"connection " + std::wstring(korlib::view_of(connection.bstrVal)));
    return fail_at == 1 ? E_ABORT : S_OK;
  }
  HRESULT put_CommandType(LONG type) override {
    log.push_back(L"type " + std::to_wstring(type));
    return fail_at == 2 ? E_ABORT : S_OK;
  }
  HRESULT put_CommandText(BSTR text) override {
    log.push_back(L"text " + std::wstring(korlib::view_of(text)));
    return fail_at == 3 ? E_ABORT : S_OK;
  }
  // The base is asked as the host asks; a page wants the command late-bound.
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    if (fail_at == 4 && riid == IID_IDispatch) {
      *ppv = nullptr;
      return E_NOINTERFACE;
    }
    return DispatchObject::QueryInterface(riid, ppv);
  }
  ~Command() override { ++destroyed; }

  static inline fake::Texts log;
  static inline int fail_at = 0;
  static inline int destroyed = 0;
};

HRESULT create_command(REFIID riid, void** ppv) {
  *ppv = nullptr;
  if (Command::fail_at == -1) return REGDB_E_CLASSNOTREG;
  return korlib::make<Command>()->QueryInterface(riid, ppv);
}

class Factories : public PageTest {};

TEST_F(Factories, NewADOCommandConfiguresTheHostsCommandInOrder) {
  const korlib_host::ClassRow row{CLSID_KorDBCommand, nullptr, create_command};
  korlib_host::register_classes({&row, 1});
  const fake::Texts all = {L"connection dsn", L"type 4", L"text select 1"};
  const HRESULT results[] = {REGDB_E_CLASSNOTREG, S_OK, E_ABORT, E_ABORT, E_ABORT, E_NOINTERFACE};
  for (int fail_at = -1; fail_at <= 4; ++fail_at) {
    Command::log.clear();
    Command::fail_at = fail_at;
    Command::destroyed = 0;
    const Answer answer = call(page(), L"NewADOCommand", L"dsn", L"select 1", 4);
    if (fail_at == 0) {
      EXPECT_TRUE(object_of(answer));
      EXPECT_EQ(Command::log, all);
      EXPECT_EQ(0, Command::destroyed);
    } else {
      EXPECT_EQ(results[fail_at + 1], answer.hr);
      EXPECT_EQ(static_cast<std::size_t>(std::clamp(fail_at, 0, 3)), Command::log.size());
      EXPECT_EQ(Command::destroyed, fail_at < 0 ? 0 : 1);
    }
  }
}

TEST_F(Factories, NewMailIsNotThere) {
  EXPECT_EQ(E_NOTIMPL, call(page(), L"NewMail", L"server", 25).hr);
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  auto* mail = reinterpret_cast<IDispatch*>(0x10);
  EXPECT_EQ(E_NOTIMPL, typed->NewMail(nullptr, 0, &mail));
  EXPECT_EQ(nullptr, mail);
}

class ChildTemplator : public PageTest {
 protected:
  CComPtr<IDispatch> child(const wchar_t* prefix) {
    const korlib_host::ContextScope scope(asp_.context.get());
    const Answer answer = call(page(), L"NewTemplator", prefix);
    EXPECT_EQ(S_OK, answer.hr);
    return object_of(answer);
  }
  static std::wstring drawn(IDispatch* templator, const std::wstring& text) {
    const Answer answer = call(templator, L"ProcessTemplate", text);
    return FAILED(answer.hr) ? text_of(answer) : text_of(call(templator, L"Flush"));
  }
};

TEST_F(ChildTemplator, DrawsWithThePagesViewAndBagAndItsOwnPrefix) {
  with_name();
  in_process([&] {
    call(page(), L"SetView", L"v", L"<view>");
    put(object_of(get(page(), L"Bag")).get(), L"Item", L"b", L"bag");
    const CComPtr<IDispatch> templator = child(L"OnRow_");
    const CComPtr<FakeScript> rows = FakeScript::make();
    rows->function(L"OnRow_Cell", [](const Arguments& a) {
      call(a[0].pdispVal, L"Write", L"cell", false);
      return CComVariant();
    });
    EXPECT_EQ(S_OK, putref(templator.get(), L"Script", rows).hr);
    EXPECT_EQ(L"<view> «<view>» bag cell", drawn(templator.get(), L"(#/v#) (#*v#) (#|b#) (#%Cell#)"));
    EXPECT_EQ(page(), object_of(get(templator.get(), L"Main")).get());
    EXPECT_EQ(L"<code 80004005>Event 'OnRow_None' not found.", drawn(templator.get(), L"(#%None#)"));
    rows->forget_calls();
  });
}

TEST_F(ChildTemplator, OutsideProcessHasNeitherViewNorBag) {
  const CComPtr<IDispatch> templator = child(L"");
  EXPECT_TRUE(templator);
  EXPECT_EQ(L"<code 80004005>", drawn(templator.get(), L"(#/v#)"));
  EXPECT_EQ(L"<code 80004005>", drawn(templator.get(), L"(#|b#)"));
}

TEST_F(ChildTemplator, GoesOnWithoutAPageThatIsGone) {
  CComPtr<IDispatch> templator;
  {
    const CComPtr<IDispatch> gone = new_page();
    put(gone.get(), L"SelfEncode", true);
    const korlib_host::ContextScope scope(asp_.context.get());
    templator = object_of(call(gone.get(), L"NewTemplator", L""));
  }
  const CComPtr<IDispatch> in_its_place = new_page();
  put(in_its_place.get(), L"SelfEncode", true);
  EXPECT_EQ(E_FAIL, get(templator.get(), L"Main").hr);
  EXPECT_EQ(S_OK, call(templator.get(), L"Write", L"<", true).hr);
  EXPECT_EQ(L"«<»", text_of(call(templator.get(), L"Flush"))) << "the host encodes";
}

TEST_F(ChildTemplator, OutsideARequestIsNotMade) {
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, call(page(), L"NewTemplator", L"").hr);
}

TEST_F(ChildTemplator, FollowsSelfEncodeAtEveryWrite) {
  const CComPtr<IDispatch> templator = child(L"");
  call(templator.get(), L"Write", L"<", true);
  put(page(), L"SelfEncode", true);
  call(templator.get(), L"Write", L"<", true);
  EXPECT_EQ(L"«<»&lt;", text_of(call(templator.get(), L"Flush")));
}

}  // namespace
}  // namespace test
