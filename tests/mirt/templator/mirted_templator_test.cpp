// The child templator, made by a page controller that is bound to a request.
#include "mirt/page/page_fixture.h"
#include "mirt/templator/recording_sink.h"

namespace test {
namespace {

class Child : public PageTest {
 protected:
  // Runs `body` with a child made while Process runs, so that it has the page's view.
  void with_child(const std::function<void()>& body) {
    with_name();
    in_process([&] {
      child_ = new_child(L"Draw_");
      ASSERT_TRUE(child_);
      EXPECT_EQ(S_OK, putref(child_.get(), L"Script", script_).hr);
      body();
      script().forget_calls();
      child_.reset();
    });
  }
  CComPtr<IDispatch> new_child(const wchar_t* prefix) {
    const korlib_host::ContextScope scope(asp_.context.get());
    return object_of(call(page(), L"NewTemplator", prefix));
  }
  std::wstring flush() { return text_of(call(child_.get(), L"Flush")); }
  // What a template draws, or the code and text of its failure.
  std::wstring drawn(const std::wstring& text) {
    const std::size_t before = flush().size();
    const Answer answer = call(child_.get(), L"ProcessTemplate", text);
    return FAILED(answer.hr) ? text_of(answer) : flush().substr(before);
  }
  void set_item(const wchar_t* dictionary, const wchar_t* key, const CComVariant& value) {
    const CComPtr<IDispatch> items = object_of(get(page(), dictionary));
    ASSERT_TRUE(items);
    EXPECT_EQ(S_OK, put(items.get(), L"Item", key, value).hr);
  }

  CComPtr<IDispatch> child_;
};

TEST_F(Child, ReadsEachSourceRawAndEncoded) {
  asp_.session->values()[L"k"] = value_of(L"<session>");
  asp_.application->values[L"k"] = value_of(L"<application>");
  asp_.request->query_string->set(L"k", {L"<request>"});
  script().value(L"k", L"<script>");
  with_child([&] {
    set_item(L"View", L"k", value_of(L"<view>"));
    set_item(L"Bag", L"k", value_of(L"<bag>"));
    struct Row {
      const wchar_t* raw;
      const wchar_t* encoded;
      const wchar_t* text;
    };
    // The fake server's encoder puts angle quotes around the text.
    const Row rows[] = {
        {L":", L";", L"<script>"},      {L"/", L"*", L"<view>"},     {L"~", L"=", L"<session>"},
        {L"-", L"+", L"<application>"}, {L"\\", L"$", L"<request>"}, {L"|", L"&", L"<bag>"},
    };
    for (const Row& row : rows) {
      EXPECT_EQ(row.text, drawn(std::wstring(L"(#") + row.raw + L"k#)"));
      EXPECT_EQ(std::wstring(L"\u00ab") + row.text + L"\u00bb", drawn(std::wstring(L"(#") + row.encoded + L"k#)"));
    }
  });
}

TEST_F(Child, FollowsThePathIntoEachSource) {
  const CComVariant list = value_of(std::vector<CComVariant>{value_of(L"zero"), value_of(L"one")});
  asp_.session->values()[L"k"] = list;
  asp_.application->values[L"k"] = list;
  asp_.request->query_string->set(L"k", {L"first", L"second"});
  script().value(L"k", list);
  with_child([&] {
    set_item(L"View", L"k", list);
    set_item(L"Bag", L"k", list);
    for (const wchar_t* type : {L":", L"/", L"~", L"-", L"|"}) {
      EXPECT_EQ(L"one", drawn(std::wstring(L"(#") + type + L"k|1#)")) << type;
      EXPECT_EQ(L"<code 8002000B>", drawn(std::wstring(L"(#") + type + L"k|2#)")) << type;
    }
    EXPECT_EQ(L"second", drawn(L"(#\\k|2#)"));
    EXPECT_EQ(L"first, second", drawn(L"(#\\k#)"));
  });
}

TEST_F(Child, WritesNothingForOtherMarks) {
  with_child([&] {
    EXPECT_EQ(L"ab", drawn(L"a(#k#)b"));
    EXPECT_EQ(L"ab", drawn(L"a(#!k#)b"));  // no type here
    EXPECT_EQ(L"ab", drawn(L"a(#?k#)b"));
    EXPECT_EQ(L"ab", drawn(L"a(#`k#)b"));
    EXPECT_EQ(L"ab", drawn(L"a(#@k#)b"));
    EXPECT_EQ(L"ab", drawn(L"a(##)b"));
  });
}

TEST_F(Child, CallsAScriptFunctionWithItsPrefix) {
  script().function(L"Draw_Row", [&](const Arguments& arguments) {
    EXPECT_EQ(2u, arguments.size());
    EXPECT_EQ(child_.get(), arguments.at(0).pdispVal);
    const SAFEARRAY* array = arguments.at(1).parray;
    EXPECT_EQ(2u, array->rgsabound[0].cElements);
    const auto* params = static_cast<const VARIANT*>(array->pvData);
    call(child_.get(), L"Write", std::wstring(korlib::view_of(params[1].bstrVal)), false);
    return value_of(L"not written");
  });
  with_child([&] { EXPECT_EQ(L"[b]", drawn(L"[(#%Row|a#|#b#)]")); });
}

TEST_F(Child, NamesAFunctionThatIsMissing) {
  with_child([&] {
    const Answer answer = call(child_.get(), L"ProcessTemplate", L"(#%Row#)");
    EXPECT_EQ(E_FAIL, answer.hr);
    EXPECT_EQ(L"MirtedTemplator", answer.source);
    EXPECT_EQ(L"Event 'Draw_Row' not found.", answer.description);
  });
}

TEST_F(Child, PassesTheFailureOfAFunctionOn) {
  script().failing(L"Draw_Row", DISP_E_DIVBYZERO, L"cannot");
  with_child([&] { EXPECT_EQ(L"<code 80020012>cannot", drawn(L"a(#%Row#)b")); });
}

TEST_F(Child, CallsAFunctionThatAPropertyMarkNames) {
  script().function(L"f", [&](const Arguments& arguments) {
    EXPECT_EQ(child_.get(), arguments.at(0).pdispVal);
    return value_of(L"<" + std::to_wstring(arguments.at(1).parray->rgsabound[0].cElements) + L">");
  });
  with_child([&] {
    EXPECT_EQ(L"<1>", drawn(L"(#:f|a#)"));
    EXPECT_EQ(L"\u00ab<0>\u00bb", drawn(L"(#;f#)"));
  });
}

TEST_F(Child, FailsAMarkWithoutAValueThatHasAText) {
  script().value(L"Null", null_value());
  asp_.session->values()[L"Null"] = null_value();
  with_child([&] {
    EXPECT_EQ(L"<code 80020006>", drawn(L"(#:unknown#)"));
    EXPECT_EQ(L"<code 80020005>", drawn(L"(#:Null#)"));
    EXPECT_EQ(L"<code 80020005>", drawn(L"(#~Null#)"));
    EXPECT_EQ(L"[]", drawn(L"[(#/unknown#)]"));  // an item that is missing is empty
    EXPECT_EQ(L"[]", drawn(L"[(#~unknown#)]"));
  });
}

TEST_F(Child, PassesTheFailureOfASourceOn) {
  with_child([&] {
    asp_.calls->fail("Session.Value", DISP_E_OVERFLOW);
    asp_.calls->fail("Application.Value", DISP_E_BADINDEX);
    asp_.calls->fail("Server.HTMLEncode", E_ACCESSDENIED);
    EXPECT_EQ(L"<code 8002000A>", drawn(L"(#~k#)"));
    EXPECT_EQ(L"<code 8002000B>", drawn(L"(#-k#)"));
    set_item(L"View", L"k", value_of(L"v"));
    EXPECT_EQ(L"<code 80070005>", drawn(L"(#*k#)"));
    EXPECT_EQ(L"v", drawn(L"(#/k#)"));
  });
}

TEST_F(Child, HasNoSessionWhereThePageHasNone) {
  asp_.without_session();
  in_process([&] {
    child_ = new_child(L"");
    EXPECT_EQ(L"<code 80004005>", drawn(L"(#~k#)"));
    EXPECT_EQ(L"<code 80004005>", drawn(L"(#=k#)"));
    child_.reset();
  });
}

TEST_F(Child, HasNoBagWhereThePageHasNoName) {
  in_process([&] {
    child_ = new_child(L"");
    EXPECT_EQ(L"<code 80004005>", drawn(L"(#|k#)"));
    EXPECT_EQ(L"<code 80004005>", drawn(L"(#&k#)"));
    child_.reset();
  });
}

TEST_F(Child, HasNoViewOutsideProcess) {
  child_ = new_child(L"");
  ASSERT_TRUE(child_);
  EXPECT_EQ(L"<code 80004005>", drawn(L"(#/k#)"));
  child_.reset();
}

TEST_F(Child, EncodesAsThePageSaysAtEachWrite) {
  with_child([&] {
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"<a>", true).hr);
    EXPECT_EQ(S_OK, put(page(), L"SelfEncode", true).hr);
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"<b>", true).hr);
    EXPECT_EQ(S_OK, put(page(), L"SelfEncode", false).hr);
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"<c>", true).hr);
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"<d>", false).hr);
    EXPECT_EQ(L"\u00ab<a>\u00bb&lt;b&gt;\u00ab<c>\u00bb<d>", flush());
  });
}

// A typed caller's truth may be any value but zero.
TEST_F(Child, EncodesForAnyValueButZero) {
  with_child([&] {
    CComPtr<IMirtedTemplator> typed;
    ASSERT_EQ(S_OK, child_.query(typed.put()));
    for (const VARIANT_BOOL encode : {VARIANT_BOOL{1}, VARIANT_BOOL{2}, VARIANT_TRUE, VARIANT_FALSE}) {
      EXPECT_EQ(S_OK, typed->Write(CComBSTR(L"a"), encode));
    }
    EXPECT_EQ(S_OK, typed->Write(nullptr, VARIANT_TRUE));
    EXPECT_EQ(L"\u00aba\u00bb\u00aba\u00bb\u00aba\u00bba", flush());
  });
}

TEST_F(Child, DoesNotEncodeNothing) {
  script().value(L"Empty", L"");
  with_child([&] {
    const int before = asp_.calls->count("Server.HTMLEncode");
    EXPECT_EQ(L"[]", drawn(L"[(#;Empty#)]"));
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"", true).hr);
    EXPECT_EQ(before, asp_.calls->count("Server.HTMLEncode"));
  });
}

TEST_F(Child, KnowsItsPage) {
  with_child([&] { EXPECT_EQ(page(), object_of(get(child_.get(), L"Main")).get()); });
}

TEST_F(Child, WritesWhereItIsTold) {
  with_child([&] {
    const CComPtr<RecordingSink> sink = RecordingSink::make(kTextStream);
    CComPtr<IMirtedTemplator> typed;
    ASSERT_EQ(S_OK, child_.query(typed.put()));
    EXPECT_EQ(S_OK, typed->putref_Stream(sink->unknown()));
    EXPECT_EQ(S_OK, call(child_.get(), L"ProcessTemplate", L"ab").hr);
    EXPECT_EQ(L"ab", sink->text());
    EXPECT_EQ(E_FAIL, call(child_.get(), L"Flush").hr);
    EXPECT_EQ(S_OK, typed->putref_Stream(nullptr));
    EXPECT_EQ(E_FAIL, call(child_.get(), L"Write", L"x", false).hr);
    asp_.calls->fail("Server.HTMLEncode", E_ACCESSDENIED);
    EXPECT_EQ(E_FAIL, call(child_.get(), L"Write", L"x", true).hr);  // without an output nothing is encoded
    EXPECT_EQ(E_FAIL, call(child_.get(), L"ProcessTemplate", L"x").hr);
  });
}

TEST_F(Child, DrawsAFile) {
  const std::wstring path = file("row.txt", "\xC3\xA9(#:Name#)");
  script().value(L"Name", L"x");
  with_child([&] {
    EXPECT_EQ(S_OK, call(child_.get(), L"ProcessTemplateFile", path, L"UTF-8").hr);
    EXPECT_EQ(L"\u00e9x", flush());
    EXPECT_TRUE(FAILED(call(child_.get(), L"ProcessTemplateFile", path + L".missing", L"UTF-8").hr));
  });
}

TEST_F(Child, KeepsTheScriptsOfItsOwn) {
  with_child([&] {
    EXPECT_EQ(&script(), object_of(get(child_.get(), L"Script")).get());
    const CComPtr<FakeScript> later = FakeScript::make();
    later->value(L"Name", L"later");
    script().value(L"Name", L"first");
    EXPECT_EQ(S_OK, putref(child_.get(), L"Script", later).hr);
    EXPECT_EQ(L"later", drawn(L"(#:Name#)"));
  });
}

TEST_F(Child, ComesOutOfThePoolLikeNew) {
  const void* block = nullptr;
  with_child([&] {
    EXPECT_EQ(S_OK, call(child_.get(), L"Write", L"old", false).hr);
    block = child_.get();
  });
  const korlib_host::ContextScope scope(asp_.context.get());
  auto* factory = module_.symbol<IClassFactory>("g_oCF_MirtedTemplator");
  CComPtr<IMirtedTemplator> fresh;
  ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, korlib::iid_of<IMirtedTemplator>, fresh.put_void()));
  EXPECT_EQ(block, fresh.get()) << "the pool gave another block";
  EXPECT_EQ(L"", text_of(call(fresh.get(), L"Flush")));
  EXPECT_EQ(nullptr, get(fresh.get(), L"Script").value.pdispVal);
  EXPECT_EQ(E_FAIL, get(fresh.get(), L"Main").hr);
  EXPECT_EQ(E_FAIL, call(fresh.get(), L"ProcessTemplate", L"(#/k#)").hr);
  EXPECT_EQ(E_FAIL, call(fresh.get(), L"ProcessTemplate", L"(#|k#)").hr);
  EXPECT_EQ(L"Event 'Row' not found.", call(fresh.get(), L"ProcessTemplate", L"(#%Row#)").description);
}

// The class object binds to the request; without one the object stays with the caller.
TEST_F(Child, IsOfNoUseWithoutARequest) {
  auto* factory = module_.symbol<IClassFactory>("g_oCF_MirtedTemplator");
  CComPtr<IMirtedTemplator> unbound;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT,
            factory->CreateInstance(nullptr, korlib::iid_of<IMirtedTemplator>, unbound.put_void()));
  ASSERT_TRUE(unbound);
  for (const wchar_t* text : {L"(#/k#)", L"(#~k#)", L"(#-k#)", L"(#\\k#)", L"(#|k#)"}) {
    EXPECT_EQ(E_FAIL, call(unbound.get(), L"ProcessTemplate", text).hr) << text;
  }
  EXPECT_EQ(E_FAIL, call(unbound.get(), L"Write", L"x", true).hr);
  EXPECT_EQ(S_OK, call(unbound.get(), L"Write", L"x", false).hr);
  IMirt* main = reinterpret_cast<IMirt*>(this);  // poison
  EXPECT_EQ(E_FAIL, unbound->get_Main(&main));
  EXPECT_EQ(nullptr, main);
}

TEST_F(Child, PassesOnWhatTheScriptAskedLastFailedWith) {
  with_child([&] {
    const CComPtr<FakeScript> later = FakeScript::make();
    later->fail_unknown_names(E_ACCESSDENIED);
    EXPECT_EQ(S_OK, putref(child_.get(), L"Script", later).hr);
    EXPECT_EQ(L"<code 80020006>", drawn(L"(#:x#)")) << "of the first, which does not know the name";
    script().fail_unknown_names(E_ABORT);
    EXPECT_EQ(L"<code 80004004>", drawn(L"(#:x#)"));
    script().fail_unknown_names(DISP_E_UNKNOWNNAME);
    script().value(L"x", L"found");
    EXPECT_EQ(L"found", drawn(L"(#:x#)"));
  });
}

}  // namespace
}  // namespace test
