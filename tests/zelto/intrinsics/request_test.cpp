#include "zelto/intrinsics/request_fixture.h"

namespace {

using namespace test;

class Request : public RequestTest {};

TEST_F(Request, FindsNamesInAnyLetterCaseAndKeepsTheirOwn) {
  request.query = "Name=x&b=2";
  EXPECT_EQ(L"x", text(L"QueryString", L"nAmE"));
  EXPECT_EQ(L"Name", text_of(get(collection(L"QueryString"), L"Key", 1)));
  EXPECT_EQ(2, get(collection(L"QueryString"), L"Count").value.lVal);
}

TEST_F(Request, JoinsSeveralValuesAndGivesEachByItsNumber) {
  request.query = "t=a&u=0&T=b";
  const auto list = object_of(get(request_object().get(), L"QueryString", L"t"));
  EXPECT_EQ(L"a, b", text_of(default_of(list)));
  EXPECT_EQ(2, get(list, L"Count").value.lVal);
  EXPECT_EQ(L"b", text_of(get(list, L"Item", 2)));
  EXPECT_EQ(DISP_E_BADINDEX, get(list, L"Item", 0).hr);
  EXPECT_EQ(DISP_E_BADINDEX, get(list, L"Item", 3).hr);
}

// `list.Item` comes before `(1)`; a text in between could not be called.
TEST_F(Request, NeedsAnIndexForItem) {
  request.query = "a=1";
  const auto list = object_of(get(request_object().get(), L"QueryString", L"a"));
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, get(list, L"Item").hr);
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, get(collection(L"QueryString"), L"Item").hr);
}

TEST_F(Request, GivesAMissingNameAsAnEmptyList) {
  const auto list = object_of(get(request_object().get(), L"QueryString", L"none"));
  ASSERT_TRUE(list);
  EXPECT_EQ(0, get(list, L"Count").value.lVal);
  EXPECT_EQ(VT_EMPTY, default_of(list).value.vt);
  EXPECT_TRUE(CComQIPtr<ZeltoTypeLibrary::IStringList>(list.get()));
}

TEST_F(Request, DecodesPlusPercentAndUtf8) {
  request.query = "a=x+y%26z&b=%E3%81%82&c=100%&d=%zz&e&=f&&g=";
  EXPECT_EQ(L"x y&z", text(L"QueryString", L"a"));
  EXPECT_EQ(L"\u3042", text(L"QueryString", L"b"));
  EXPECT_EQ(L"100%", text(L"QueryString", L"c"));
  EXPECT_EQ(L"%zz", text(L"QueryString", L"d"));
  EXPECT_EQ(L"", text(L"QueryString", L"e"));
  EXPECT_EQ(L"f", text(L"QueryString", L""));
  EXPECT_EQ(L"", text(L"QueryString", L"g"));
}

TEST_F(Request, GivesTheRawTextOfACollectionWithoutAName) {
  request.query = "a=1&b=%20";
  EXPECT_EQ(L"a=1&b=%20", text_of(default_of(collection(L"QueryString"))));
}

TEST_F(Request, DecodesAFormInThePagesCodePage) {
  post_form("name=%82%A0");  // HIRAGANA LETTER A in Shift_JIS
  page().request.code_page = 932;
  EXPECT_EQ(L"\u3042", text(L"Form", L"name"));
}

// Compares as std::equal_to would, and counts.
struct CountingEqual : base::FoldedEqual {
  template <class A, class B>
  bool operator()(const A& a, const B& b) const {
    ++comparisons;
    return base::FoldedEqual::operator()(a, b);
  }
  static inline std::size_t comparisons = 0;
};

// A request has room for them.
TEST(RequestCookies, AreReadInLinearTime) {
  constexpr std::size_t kMany = 4000;
  std::string header;
  for (std::size_t i = 0; i < kMany; ++i) header += std::to_string(i) + "=;";
  zelto::CookieTable<CountingEqual> cookies;
  cookies.add_header(header + header);
  EXPECT_EQ(kMany, cookies.size());
  EXPECT_LT(CountingEqual::comparisons, 4 * kMany);
}

TEST_F(Request, RefusesAFormOfMoreThanAThousandFields) {
  std::string body;
  for (int i = 0; i <= 1000; ++i) body += "a=1&";
  post_form(body);
  const Answer answer = get(collection(L"Form"), L"Count");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"The form has more than 1000 fields.", answer.description);
}

TEST_F(Request, RefusesAQueryStringOfMoreThanAThousandFields) {
  for (int i = 0; i <= 1000; ++i) request.query += "a&";
  const std::wstring_view said = L"The query string has more than 1000 fields.";
  EXPECT_EQ(said, get(collection(L"QueryString"), L"Count").description);
  const Answer searched = get(request_object().get(), L"Item", L"b");
  EXPECT_EQ(E_FAIL, searched.hr);
  EXPECT_EQ(said, searched.description);
}

TEST_F(Request, TakesAFormOfAThousandFields) {
  std::string body;
  for (int i = 0; i < 1000; ++i) body += "&a=1";
  post_form(body);
  EXPECT_EQ(1000, get(object_of(get(collection(L"Form"), L"Item", L"a")), L"Count").value.lVal);
}

TEST_F(Request, ReadsABodyOfAnotherTypeAsAnEmptyForm) {
  post_form("a=1");
  request.headers.back().value = "text/plain";
  EXPECT_EQ(0, get(collection(L"Form"), L"Count").value.lVal);
}

TEST_F(Request, SearchesTheCollectionsInOrder) {
  request.query = "q=query&all=query";
  post_form("f=form&all=form&q=form");
  request.headers.push_back({"Cookie", "c=cookie; all=cookie; f=cookie"});
  const auto find = [this](const wchar_t* name) {
    return text_of(default_of(object_of(get(request_object().get(), L"Item", name))));
  };
  EXPECT_EQ(L"query", find(L"q"));
  EXPECT_EQ(L"query", find(L"all"));
  EXPECT_EQ(L"form", find(L"f"));
  EXPECT_EQ(L"cookie", find(L"c"));
  EXPECT_EQ(L"POST", find(L"request_method"));
}

// For scripts. A component finds a list that is empty and reads as nothing.
TEST_F(Request, FindsNothingAtAllForANameThatNoCollectionHas) {
  EXPECT_EQ(VT_EMPTY, get(request_object().get(), L"Item", L"none").value.vt);
  CComPtr<IDispatch> found;
  EXPECT_EQ(S_OK, request_object()->get_Item(CComBSTR(L"none"), found.put()));
  const CComQIPtr<ZeltoTypeLibrary::IStringList> list(found.get());
  ASSERT_TRUE(list);
  int count = -1;
  EXPECT_EQ(S_OK, list->get_Count(&count));
  EXPECT_EQ(0, count);
  CComVariant text(found.get());
  EXPECT_EQ(S_OK, text.change_type(VT_BSTR));
  EXPECT_EQ(0u, SysStringLen(text.bstrVal));
}

TEST_F(Request, ReadsCookiesAndTheirKeys) {
  request.headers.push_back({"Cookie", "a=x%20y; user=name=Ann&city=K%C3%B6ln; a=second; q=\"quoted\""});
  EXPECT_EQ(L"x y", text(L"Cookies", L"A"));
  EXPECT_EQ(L"quoted", text(L"Cookies", L"q"));
  const auto user = object_of(get(request_object().get(), L"Cookies", L"user"));
  EXPECT_TRUE(is_true(get(user, L"HasKeys")));
  EXPECT_EQ(L"K\u00F6ln", text_of(get(user, L"Item", L"CITY")));
  EXPECT_EQ(L"", text_of(get(user, L"Item", L"none")));
  EXPECT_EQ(L"name=Ann&city=K%C3%B6ln", text_of(default_of(user)));
  EXPECT_EQ(3, get(collection(L"Cookies"), L"Count").value.lVal);
}

TEST_F(Request, JoinsCookieHeadersAsCookiesAre) {
  request.headers.push_back({"cookie", "a=1"});
  request.headers.push_back({"COOKIE", "b=2"});
  request.headers.push_back({"X-A", "1"});
  request.headers.push_back({"x-a", "2"});
  EXPECT_EQ(L"a=1; b=2", text(L"ServerVariables", L"HTTP_COOKIE"));
  EXPECT_EQ(L"1, 2", text(L"ServerVariables", L"HTTP_X_A"));
  EXPECT_EQ(L"2", text(L"Cookies", L"b"));
}

TEST_F(Request, OffersACookieAsAListOfValuesToo) {
  request.headers.push_back({"Cookie", "a=1"});
  CComPtr<IDispatch> cookie = object_of(get(request_object().get(), L"Cookies", L"a"));
  CComQIPtr<ZeltoTypeLibrary::IStringList> list(cookie.get());
  ASSERT_TRUE(list);
  int count = 0;
  EXPECT_EQ(S_OK, list->get_Count(&count));
  EXPECT_EQ(1, count);
  CComVariant value;
  EXPECT_EQ(S_OK, list->get_Item(korlib::long_variant(1), &value));
  EXPECT_EQ(L"1", korlib::view_of(value.bstrVal));
}

TEST_F(Request, GivesAMissingCookieAsEmptyText) {
  EXPECT_EQ(L"", text(L"Cookies", L"none"));
  const auto cookie = object_of(get(request_object().get(), L"Cookies", L"none"));
  EXPECT_EQ(0, get(cookie, L"Count").value.lVal);
  EXPECT_FALSE(is_true(get(cookie, L"HasKeys")));
}

TEST_F(Request, KnowsTheServerVariables) {
  post_form("a=1");
  request.query = "x=1";
  request.headers.push_back({"Accept-Language", "de"});
  request.headers.push_back({"accept-language", "ja"});
  const struct {
    const wchar_t* name;
    const wchar_t* value;
  } rows[] = {
      {L"REQUEST_METHOD", L"POST"},
      {L"HTTP_METHOD", L"POST"},
      {L"QUERY_STRING", L"x=1"},
      {L"CONTENT_LENGTH", L"3"},
      {L"CONTENT_TYPE", L"application/x-www-form-urlencoded; charset=utf-8"},
      {L"HTTP_CONTENT_TYPE", L"application/x-www-form-urlencoded; charset=utf-8"},
      {L"REMOTE_ADDR", L"192.0.2.7"},
      {L"REMOTE_PORT", L"50000"},
      {L"SERVER_NAME", L"example.org"},
      {L"SERVER_PORT", L"8080"},
      {L"SERVER_PROTOCOL", L"HTTP/1.1"},
      {L"SCRIPT_NAME", L"/shop/list.asp"},
      {L"PATH_INFO", L"/shop/list.asp"},
      {L"PATH_TRANSLATED", L"/srv/site/shop/list.asp"},
      {L"APPL_PHYSICAL_PATH", L"/srv/site/"},
      {L"URL", L"/shop/list.asp"},
      {L"HTTPS", L"off"},
      {L"AUTH_TYPE", L""},
      {L"AUTH_USER", L""},
      {L"AUTH_PASSWORD", L""},
      {L"LOGON_USER", L""},
      {L"HTTP_HOST", L"example.org:8080"},
      {L"http_accept_language", L"de, ja"},
      {L"ALL_RAW",
       L"Host: example.org:8080\r\nContent-Type: application/x-www-form-urlencoded; charset=utf-8\r\n"
       L"Accept-Language: de\r\naccept-language: ja\r\n"},
      {L"ALL_HTTP",
       L"HTTP_HOST:example.org:8080\nHTTP_CONTENT_TYPE:application/x-www-form-urlencoded; "
       L"charset=utf-8\nHTTP_ACCEPT_LANGUAGE:de, ja\n"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.value, text(L"ServerVariables", row.name)) << testing::PrintToString(std::wstring(row.name));
}

TEST_F(Request, HasAnEmptyClientCertificate) {
  EXPECT_EQ(0, get(collection(L"ClientCertificate"), L"Count").value.lVal);
}

TEST_F(Request, EnumeratesNames) {
  request.query = "b=1&a=2&B=3";
  CComPtr<IUnknown> names;
  CComQIPtr<ZeltoTypeLibrary::IRequestDictionary> query(collection(L"QueryString").get());
  ASSERT_EQ(S_OK, query->get__NewEnum(names.put()));
  CComQIPtr<IEnumVARIANT> steps(names.get());
  VARIANT values[3]{};
  ULONG fetched = 0;
  EXPECT_EQ(S_FALSE, steps->Next(3, values, &fetched));
  ASSERT_EQ(2u, fetched);
  EXPECT_EQ(L"b", korlib::view_of(values[0].bstrVal));
  EXPECT_EQ(L"a", korlib::view_of(values[1].bstrVal));
  VariantClear(&values[0]);
  VariantClear(&values[1]);
}

TEST_F(Request, StaysSafeWhenHeldBeyondThePage) {
  request.query = "a=1";
  CComPtr<IDispatch> list;
  {
    const auto object = request_object();
    list = object_of(get(object.get(), L"QueryString", L"a"));
  }
  EXPECT_EQ(L"1", text_of(default_of(list)));
}

}  // namespace
