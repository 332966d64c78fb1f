#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class Server : public PageTest {
 protected:
  std::wstring map(const wchar_t* path) { return text_of(call(server_object().get(), L"MapPath", path)); }
};

TEST_F(Server, MapsPathsFromTheRootAndFromThePage) {
  EXPECT_EQ(map(L"/a/b.txt"), L"/srv/site/a/b.txt");
  EXPECT_EQ(map(L"b.txt"), L"/srv/site/shop/b.txt");
  EXPECT_EQ(map(L"..\\data\\x.db"), L"/srv/site/data/x.db");
  EXPECT_EQ(map(L"../"), L"/srv/site");
  EXPECT_EQ(map(L"/"), L"/srv/site");
  EXPECT_EQ(map(L""), L"/srv/site/shop");
  EXPECT_EQ(map(L"./tpl/./x"), L"/srv/site/shop/tpl/x");
}

TEST_F(Server, RefusesPathsThatLeaveTheRoot) {
  const auto server = server_object();
  for (const wchar_t* path : {L"/..", L"../..", L"/a/../../b", L"..\\..\\b"}) {
    const Answer answer = call(server.get(), L"MapPath", path);
    EXPECT_EQ(answer.hr, E_INVALIDARG);
    EXPECT_EQ(answer.description, L"MapPath: \"" + std::wstring(path) + L"\" lies outside the site.");
  }
  EXPECT_EQ(call(server.get(), L"MapPath", std::wstring(L"a\0b", 3)).hr, E_INVALIDARG);
}

TEST_F(Server, EncodesHtml) {
  const auto server = server_object();
  EXPECT_EQ(text_of(call(server.get(), L"HTMLEncode", L"<a href=\"x\">'&\u3042</a>")),
            L"&lt;a href=&quot;x&quot;&gt;'&amp;\u3042&lt;/a&gt;");
  EXPECT_EQ(text_of(call(server.get(), L"HTMLEncode", L"")), L"");
}

TEST_F(Server, EncodesCharactersThatTheCodePageLacks) {
  page().response.code_page = 1252;
  EXPECT_EQ(text_of(call(server_object().get(), L"HTMLEncode", L"\u00E9\u3042\U0001F600")), L"\u00E9&#12354;&#128512;");
  page().response.code_page = 932;
  EXPECT_EQ(text_of(call(server_object().get(), L"HTMLEncode", L"\u00E9\u3042~")), L"&#233;\u3042~");
}

TEST_F(Server, EncodesUrls) {
  EXPECT_EQ(text_of(call(server_object().get(), L"URLEncode", L"a b&c=d/\u00E9-_.")), L"a+b%26c%3Dd%2F%C3%A9-_.");
}

TEST_F(Server, TakesNoValueForNoText) {
  const auto server = server_object();
  for (const CComVariant& none : {CComVariant(), null_value(), CComVariant(korlib::omitted())}) {
    EXPECT_EQ(text_of(call(server.get(), L"HTMLEncode", none)), L"");
    EXPECT_EQ(text_of(call(server.get(), L"URLEncode", none)), L"");
    EXPECT_EQ(text_of(call(server.get(), L"MapPath", none)), L"/srv/site/shop");
  }
  EXPECT_EQ(call(server.get(), L"HTMLEncode").hr, DISP_E_BADPARAMCOUNT);
}

TEST_F(Server, EncodesTheTextOfAnyValueAsThePageWritesIt) {
  const auto server = server_object();
  page().response.lcid = 1031;
  EXPECT_EQ(text_of(call(server.get(), L"HTMLEncode", value_of({value_of(L"<"), value_of(1.5)}))), L"&lt;,1,5");
  EXPECT_EQ(text_of(call(server.get(), L"URLEncode", value_of({value_of(L"a b"), value_of(true)}))), L"a+b%2CTrue");
  EXPECT_EQ(text_of(call(server.get(), L"MapPath", 7)), L"/srv/site/shop/7");
}

TEST_F(Server, SaysWhichClassItDoesNotKnow) {
  const Answer answer = call(server_object().get(), L"CreateObject", L"No.Such");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(answer.description.find(L"No.Such"), std::wstring::npos);
}

TEST_F(Server, RunsOtherPagesThroughTheHost) {
  const auto server = server_object();
  EXPECT_EQ(call(server.get(), L"Execute", L"part.asp").hr, S_OK);
  call(response_object().get(), L"Write", L"dropped by the transfer");
  EXPECT_EQ(call(server.get(), L"Transfer", L"/other.asp").hr, FakePageHost::kEnded);
  EXPECT_EQ(host.executed, (std::vector<std::string>{"/shop/part.asp", "/other.asp"}));
  page().response.finish();
  EXPECT_EQ(sink.body, "");
}

TEST_F(Server, HasAScriptTimeout) {
  const auto server = server_object();
  EXPECT_EQ(get(server.get(), L"ScriptTimeout").value.lVal, 90);
  EXPECT_EQ(put(server.get(), L"ScriptTimeout", 120).hr, S_OK);
  EXPECT_EQ(host.timeout, 120);
  EXPECT_EQ(put(server.get(), L"ScriptTimeout", 0).hr, E_INVALIDARG);
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
  EXPECT_EQ(get(last, L"Number").value.lVal, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(text_of(get(last, L"Description")), L"Type mismatch.");
  EXPECT_EQ(text_of(get(last, L"Category")), L"Script");
  EXPECT_EQ(text_of(get(last, L"File")), L"/a.asp");
  EXPECT_EQ(get(last, L"Line").value.lVal, 7);
  EXPECT_EQ(get(last, L"Column").value.lVal, -1);
}

}  // namespace
