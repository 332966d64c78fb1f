#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class Server : public PageTest {
 protected:
  std::wstring map(const wchar_t* path) { return text_of(call(server_object().get(), L"MapPath", path)); }
};

TEST_F(Server, MapsPathsFromTheRootAndFromThePage) {
  EXPECT_EQ(L"/srv/site/a/b.txt", map(L"/a/b.txt"));
  EXPECT_EQ(L"/srv/site/shop/b.txt", map(L"b.txt"));
  EXPECT_EQ(L"/srv/site/data/x.db", map(L"..\\data\\x.db"));
  EXPECT_EQ(L"/srv/site", map(L"../"));
  EXPECT_EQ(L"/srv/site", map(L"/"));
  EXPECT_EQ(L"/srv/site/shop", map(L""));
  EXPECT_EQ(L"/srv/site/shop/tpl/x", map(L"./tpl/./x"));
}

TEST_F(Server, RefusesPathsThatLeaveTheRoot) {
  const auto server = server_object();
  for (const wchar_t* path : {L"/..", L"../..", L"/a/../../b", L"..\\..\\b"}) {
    const Answer answer = call(server.get(), L"MapPath", path);
    EXPECT_EQ(E_INVALIDARG, answer.hr);
    EXPECT_EQ(L"MapPath: \"" + std::wstring(path) + L"\" lies outside the site.", answer.description);
  }
  EXPECT_EQ(E_INVALIDARG, call(server.get(), L"MapPath", std::wstring(L"a\0b", 3)).hr);
}

TEST_F(Server, EncodesHtml) {
  const auto server = server_object();
  EXPECT_EQ(L"&lt;a href=&quot;x&quot;&gt;'&amp;\u3042&lt;/a&gt;",
            text_of(call(server.get(), L"HTMLEncode", L"<a href=\"x\">'&\u3042</a>")));
  EXPECT_EQ(L"", text_of(call(server.get(), L"HTMLEncode", L"")));
}

TEST_F(Server, EncodesCharactersThatTheCodePageLacks) {
  page().response.code_page = 1252;
  EXPECT_EQ(L"\u00E9&#12354;&#128512;", text_of(call(server_object().get(), L"HTMLEncode", L"\u00E9\u3042\U0001F600")));
  page().response.code_page = 932;
  EXPECT_EQ(L"&#233;\u3042~", text_of(call(server_object().get(), L"HTMLEncode", L"\u00E9\u3042~")));
}

TEST_F(Server, EncodesUrls) {
  EXPECT_EQ(L"a+b%26c%3Dd%2F%C3%A9-_.", text_of(call(server_object().get(), L"URLEncode", L"a b&c=d/\u00E9-_.")));
}

TEST_F(Server, TakesNoValueForNoText) {
  const auto server = server_object();
  for (const CComVariant& none : {CComVariant(), null_value(), CComVariant(korlib::omitted())}) {
    EXPECT_EQ(L"", text_of(call(server.get(), L"HTMLEncode", none)));
    EXPECT_EQ(L"", text_of(call(server.get(), L"URLEncode", none)));
    EXPECT_EQ(L"/srv/site/shop", text_of(call(server.get(), L"MapPath", none)));
  }
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, call(server.get(), L"HTMLEncode").hr);
}

TEST_F(Server, EncodesTheTextOfAnyValueAsThePageWritesIt) {
  const auto server = server_object();
  page().response.lcid = 1031;
  EXPECT_EQ(L"&lt;,1,5", text_of(call(server.get(), L"HTMLEncode", value_of({value_of(L"<"), value_of(1.5)}))));
  EXPECT_EQ(L"a+b%2CTrue", text_of(call(server.get(), L"URLEncode", value_of({value_of(L"a b"), value_of(true)}))));
  EXPECT_EQ(L"/srv/site/shop/7", text_of(call(server.get(), L"MapPath", 7)));
}

TEST_F(Server, SaysWhichClassItDoesNotKnow) {
  const Answer answer = call(server_object().get(), L"CreateObject", L"No.Such");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(L"CreateObject: no class is registered as \"No.Such\".", answer.description);
  EXPECT_EQ(L"CreateObject: no class is registered as \"Scripting.Dictonary\"; did you mean 'Scripting.Dictionary'?",
            call(server_object().get(), L"CreateObject", L"Scripting.Dictonary").description);
}

TEST_F(Server, RunsOtherPagesThroughTheHost) {
  const auto server = server_object();
  EXPECT_EQ(S_OK, call(server.get(), L"Execute", L"part.asp").hr);
  call(response_object().get(), L"Write", L"dropped by the transfer");
  EXPECT_EQ(FakePageHost::kEnded, call(server.get(), L"Transfer", L"/other.asp").hr);
  EXPECT_EQ((std::vector<std::string>{"/shop/part.asp", "/other.asp"}), host.executed);
  page().response.finish();
  EXPECT_EQ("", sink.body);
}

TEST_F(Server, HasAScriptTimeout) {
  const auto server = server_object();
  EXPECT_EQ(90, get(server.get(), L"ScriptTimeout").value.lVal);
  EXPECT_EQ(S_OK, put(server.get(), L"ScriptTimeout", 120).hr);
  EXPECT_EQ(120, host.timeout);
  EXPECT_EQ(E_INVALIDARG, put(server.get(), L"ScriptTimeout", 0).hr);
}

TEST_F(Server, HandsOutTheLastError) {
  zelto::PageError error;
  error.number = DISP_E_TYPEMISMATCH;
  error.description = L"Type mismatch.";
  error.category = L"Script";
  error.file = L"/a.asp";
  error.line = 7;
  host.error = &error;
  const auto last = object_of(call(server_object().get(), L"GetLastError"));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, get(last, L"Number").value.lVal);
  EXPECT_EQ(L"Type mismatch.", text_of(get(last, L"Description")));
  EXPECT_EQ(L"Script", text_of(get(last, L"Category")));
  EXPECT_EQ(L"/a.asp", text_of(get(last, L"File")));
  EXPECT_EQ(7, get(last, L"Line").value.lVal);
  EXPECT_EQ(-1, get(last, L"Column").value.lVal);
}

}  // namespace
