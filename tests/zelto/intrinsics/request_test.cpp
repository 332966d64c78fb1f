#include "intrinsics/collections.h"
#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class Request : public PageTest {
 protected:
  // The text of collection(name), and of collection without anything.
  std::wstring text(const wchar_t* collection, const wchar_t* name) {
    return text_of(default_of(object_of(get(request_object().get(), collection, name))));
  }
  CComPtr<IDispatch> collection(const wchar_t* name) { return object_of(get(request_object().get(), name)); }
};

TEST_F(Request, FindsNamesInAnyLetterCaseAndKeepsTheirOwn) {
  request.query = "Name=x&b=2";
  EXPECT_EQ(text(L"QueryString", L"nAmE"), L"x");
  EXPECT_EQ(text_of(get(collection(L"QueryString"), L"Key", 1)), L"Name");
  EXPECT_EQ(get(collection(L"QueryString"), L"Count").value.lVal, 2);
}

TEST_F(Request, JoinsSeveralValuesAndGivesEachByItsNumber) {
  request.query = "t=a&u=0&T=b";
  const auto list = object_of(get(request_object().get(), L"QueryString", L"t"));
  EXPECT_EQ(text_of(default_of(list)), L"a, b");
  EXPECT_EQ(get(list, L"Count").value.lVal, 2);
  EXPECT_EQ(text_of(get(list, L"Item", 2)), L"b");
  EXPECT_EQ(get(list, L"Item", 0).hr, DISP_E_BADINDEX);
  EXPECT_EQ(get(list, L"Item", 3).hr, DISP_E_BADINDEX);
}

// `list.Item` comes before `(1)`; a text in between could not be called.
TEST_F(Request, NeedsAnIndexForItem) {
  request.query = "a=1";
  const auto list = object_of(get(request_object().get(), L"QueryString", L"a"));
  EXPECT_EQ(get(list, L"Item").hr, DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(get(collection(L"QueryString"), L"Item").hr, DISP_E_BADPARAMCOUNT);
}

TEST_F(Request, GivesAMissingNameAsAnEmptyList) {
  const auto list = object_of(get(request_object().get(), L"QueryString", L"none"));
  ASSERT_TRUE(list);
  EXPECT_EQ(get(list, L"Count").value.lVal, 0);
  EXPECT_EQ(default_of(list).value.vt, VT_EMPTY);
  EXPECT_TRUE(CComQIPtr<ZeltoTypeLibrary::IStringList>(list.get()));
}

TEST_F(Request, DecodesPlusPercentAndUtf8) {
  request.query = "a=x+y%26z&b=%E3%81%82&c=100%&d=%zz&e&=f&&g=";
  EXPECT_EQ(text(L"QueryString", L"a"), L"x y&z");
  EXPECT_EQ(text(L"QueryString", L"b"), L"\u3042");
  EXPECT_EQ(text(L"QueryString", L"c"), L"100%");
  EXPECT_EQ(text(L"QueryString", L"d"), L"%zz");
  EXPECT_EQ(text(L"QueryString", L"e"), L"");
  EXPECT_EQ(text(L"QueryString", L""), L"f");
  EXPECT_EQ(text(L"QueryString", L"g"), L"");
}

TEST_F(Request, GivesTheRawTextOfACollectionWithoutAName) {
  request.query = "a=1&b=%20";
  EXPECT_EQ(text_of(default_of(collection(L"QueryString"))), L"a=1&b=%20");
}

TEST_F(Request, DecodesAFormInThePagesCodePage) {
  post_form("name=%82%A0");  // HIRAGANA LETTER A in Shift_JIS
  page().request.code_page = 932;
  EXPECT_EQ(text(L"Form", L"name"), L"\u3042");
}

TEST_F(Request, RefusesAFormOfMoreThanAThousandFields) {
  std::string body;
  for (int i = 0; i <= 1000; ++i) body += "a=1&";
  post_form(body);
  const Answer answer = get(collection(L"Form"), L"Count");
  EXPECT_EQ(answer.hr, E_FAIL);
  EXPECT_EQ(answer.description, L"The form has more than 1000 fields.");
}

TEST_F(Request, RefusesAQueryStringOfMoreThanAThousandFields) {
  for (int i = 0; i <= 1000; ++i) request.query += "a&";
  const std::wstring_view said = L"The query string has more than 1000 fields.";
  EXPECT_EQ(get(collection(L"QueryString"), L"Count").description, said);
  const Answer searched = get(request_object().get(), L"Item", L"b");
  EXPECT_EQ(searched.hr, E_FAIL);
  EXPECT_EQ(searched.description, said);
}

TEST_F(Request, TakesAFormOfAThousandFields) {
  std::string body;
  for (int i = 0; i < 1000; ++i) body += "&a=1";
  post_form(body);
  EXPECT_EQ(get(object_of(get(collection(L"Form"), L"Item", L"a")), L"Count").value.lVal, 1000);
}

TEST_F(Request, ReadsABodyOfAnotherTypeAsAnEmptyForm) {
  post_form("a=1");
  request.headers.back().value = "text/plain";
  EXPECT_EQ(get(collection(L"Form"), L"Count").value.lVal, 0);
}

TEST_F(Request, SearchesTheCollectionsInOrder) {
  request.query = "q=query&all=query";
  post_form("f=form&all=form&q=form");
  request.headers.push_back({"Cookie", "c=cookie; all=cookie; f=cookie"});
  const auto find = [this](const wchar_t* name) {
    return text_of(default_of(object_of(get(request_object().get(), L"Item", name))));
  };
  EXPECT_EQ(find(L"q"), L"query");
  EXPECT_EQ(find(L"all"), L"query");
  EXPECT_EQ(find(L"f"), L"form");
  EXPECT_EQ(find(L"c"), L"cookie");
  EXPECT_EQ(find(L"request_method"), L"POST");
}

// For scripts. A component finds a list that is empty and reads as nothing.
TEST_F(Request, FindsNothingAtAllForANameThatNoCollectionHas) {
  EXPECT_EQ(get(request_object().get(), L"Item", L"none").value.vt, VT_EMPTY);
  CComPtr<IDispatch> found;
  EXPECT_EQ(request_object()->get_Item(CComBSTR(L"none"), found.put()), S_OK);
  const CComQIPtr<ZeltoTypeLibrary::IStringList> list(found.get());
  ASSERT_TRUE(list);
  int count = -1;
  EXPECT_EQ(list->get_Count(&count), S_OK);
  EXPECT_EQ(count, 0);
  CComVariant text(found.get());
  EXPECT_EQ(text.change_type(VT_BSTR), S_OK);
  EXPECT_EQ(SysStringLen(text.bstrVal), 0u);
}

TEST_F(Request, ReadsCookiesAndTheirKeys) {
  request.headers.push_back({"Cookie", "a=x%20y; user=name=Ann&city=K%C3%B6ln; a=second; q=\"quoted\""});
  EXPECT_EQ(text(L"Cookies", L"A"), L"x y");
  EXPECT_EQ(text(L"Cookies", L"q"), L"quoted");
  const auto user = object_of(get(request_object().get(), L"Cookies", L"user"));
  EXPECT_TRUE(is_true(get(user, L"HasKeys")));
  EXPECT_EQ(text_of(get(user, L"Item", L"CITY")), L"K\u00F6ln");
  EXPECT_EQ(text_of(get(user, L"Item", L"none")), L"");
  EXPECT_EQ(text_of(default_of(user)), L"name=Ann&city=K%C3%B6ln");
  EXPECT_EQ(get(collection(L"Cookies"), L"Count").value.lVal, 3);
}

TEST_F(Request, JoinsCookieHeadersAsCookiesAre) {
  request.headers.push_back({"cookie", "a=1"});
  request.headers.push_back({"COOKIE", "b=2"});
  request.headers.push_back({"X-A", "1"});
  request.headers.push_back({"x-a", "2"});
  EXPECT_EQ(text(L"ServerVariables", L"HTTP_COOKIE"), L"a=1; b=2");
  EXPECT_EQ(text(L"ServerVariables", L"HTTP_X_A"), L"1, 2");
  EXPECT_EQ(text(L"Cookies", L"b"), L"2");
}

TEST_F(Request, OffersACookieAsAListOfValuesToo) {
  request.headers.push_back({"Cookie", "a=1"});
  CComPtr<IDispatch> cookie = object_of(get(request_object().get(), L"Cookies", L"a"));
  CComQIPtr<ZeltoTypeLibrary::IStringList> list(cookie.get());
  ASSERT_TRUE(list);
  int count = 0;
  EXPECT_EQ(list->get_Count(&count), S_OK);
  EXPECT_EQ(count, 1);
  CComVariant value;
  EXPECT_EQ(list->get_Item(korlib::long_variant(1), &value), S_OK);
  EXPECT_EQ(korlib::view_of(value.bstrVal), L"1");
}

TEST_F(Request, GivesAMissingCookieAsEmptyText) {
  EXPECT_EQ(text(L"Cookies", L"none"), L"");
  const auto cookie = object_of(get(request_object().get(), L"Cookies", L"none"));
  EXPECT_EQ(get(cookie, L"Count").value.lVal, 0);
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
    EXPECT_EQ(text(L"ServerVariables", row.name), row.value) << testing::PrintToString(std::wstring(row.name));
}

TEST_F(Request, ReadsTheBodyInPieces) {
  post_form("abcdef");
  EXPECT_EQ(get(request_object().get(), L"TotalBytes").value.lVal, 6);
  const auto object = request_object();
  CComVariant count(LONG{4});
  CComVariant data;
  EXPECT_EQ(object->BinaryRead(&count, &data), S_OK);
  EXPECT_EQ(count.lVal, 4);
  EXPECT_EQ(bytes_of({S_OK, data, {}, {}}), (std::vector<std::uint8_t>{'a', 'b', 'c', 'd'}));
  EXPECT_EQ(object->BinaryRead(&count, data.put()), S_OK);
  EXPECT_EQ(count.lVal, 2);
  EXPECT_EQ(bytes_of({S_OK, data, {}, {}}), (std::vector<std::uint8_t>{'e', 'f'}));
  EXPECT_EQ(object->BinaryRead(&count, data.put()), S_OK);
  EXPECT_EQ(count.lVal, 0);
  EXPECT_EQ(data.vt, VT_NULL);
}

// A component that kept what it read before is told that there is no body any more; a script reads on and
// finds no bytes.
TEST_F(Request, GivesNullForABodyThatIsSpentToComponentsOnly) {
  post_form("");
  const auto object = request_object();
  CComVariant count(LONG{9});
  CComVariant data;
  EXPECT_EQ(object->BinaryRead(&count, &data), S_OK);
  EXPECT_EQ(data.vt, VT_ARRAY | VT_UI1) << "an empty body was not read before";
  for (int i = 0; i < 2; ++i) {
    const Answer of_script = call(object.get(), L"BinaryRead", 9);
    EXPECT_EQ(of_script.value.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(bytes_of(of_script).size(), 0u);
    count = CComVariant(LONG{9});
    EXPECT_EQ(object->BinaryRead(&count, data.put()), S_OK);
    EXPECT_EQ(data.vt, VT_NULL);
    EXPECT_EQ(count.lVal, 0);
  }
}

TEST_F(Request, HandsAWholeBodyOverWithoutACopy) {
  post_form("abcdef");
  const void* const received = std::string_view(request.body).data();
  const auto object = request_object();
  CComVariant count(LONG{6});
  CComVariant data;
  ASSERT_EQ(object->BinaryRead(&count, &data), S_OK);
  EXPECT_EQ(count.lVal, 6);
  EXPECT_EQ(data.parray->pvData, received);
  EXPECT_EQ(bytes_of({S_OK, data, {}, {}}), (std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'}));
  EXPECT_EQ(get(object.get(), L"TotalBytes").value.lVal, 6) << "read or not";
  EXPECT_EQ(text(L"ServerVariables", L"CONTENT_LENGTH"), L"6");
  CComVariant more;
  EXPECT_EQ(object->BinaryRead(&count, &more), S_OK);
  EXPECT_EQ(count.lVal, 0);
  EXPECT_EQ(more.vt, VT_NULL);
}

TEST_F(Request, ReadsAnEmptyBodyAsAnEmptyArray) {
  CComVariant count(LONG{6});
  CComVariant data;
  EXPECT_EQ(request_object()->BinaryRead(&count, &data), S_OK);
  EXPECT_EQ(count.lVal, 0);
  EXPECT_EQ(data.vt, VT_ARRAY | VT_UI1);
  EXPECT_EQ(bytes_of({S_OK, data, {}, {}}).size(), 0u);
}

TEST_F(Request, WritesTheCountReadBackThroughAReference) {
  post_form("abc");
  LONG wanted = 10;
  VARIANT count{};
  count.vt = VT_BYREF | VT_I4;
  count.plVal = &wanted;
  CComVariant data;
  EXPECT_EQ(request_object()->BinaryRead(&count, &data), S_OK);
  EXPECT_EQ(wanted, 3);
  EXPECT_EQ(count.vt, VT_BYREF | VT_I4);
}

TEST_F(Request, ExcludesTheFormAfterBinaryRead) {
  post_form("a=1");
  EXPECT_EQ(call(request_object().get(), L"BinaryRead", 1).hr, S_OK);
  const Answer answer = get(collection(L"Form"), L"Item", L"a");
  EXPECT_EQ(answer.hr, E_FAIL);
  EXPECT_EQ(answer.description, L"Form cannot be used after BinaryRead.");
  EXPECT_EQ(get(request_object().get(), L"Item", L"a").value.vt, VT_EMPTY);
}

TEST_F(Request, ExcludesBinaryReadAfterTheForm) {
  post_form("a=1");
  EXPECT_EQ(text(L"Form", L"a"), L"1");
  const Answer answer = call(request_object().get(), L"BinaryRead", 1);
  EXPECT_EQ(answer.hr, E_FAIL);
  EXPECT_EQ(answer.description, L"BinaryRead cannot be used after Form.");
}

TEST_F(Request, LeavesTheBodyAloneWhenANameIsSearchedAndItIsNoForm) {
  post_form("a=1");
  request.headers.back().value = "multipart/form-data; boundary=x";
  EXPECT_EQ(get(request_object().get(), L"Item", L"a").value.vt, VT_EMPTY);
  EXPECT_EQ(call(request_object().get(), L"BinaryRead", 3).hr, S_OK);
}

TEST_F(Request, RefusesABodyOverTheLimitWithACountOfZero) {
  request.method = "POST";
  request.body_too_large = true;
  request.body_length = 5000;
  EXPECT_EQ(get(request_object().get(), L"TotalBytes").value.lVal, 5000);
  CComVariant count(LONG{5000});
  CComVariant data(L"poison");
  EXPECT_EQ(request_object()->BinaryRead(&count, data.put()), E_FAIL);
  EXPECT_EQ(count.vt, VT_I4);
  EXPECT_EQ(count.lVal, 0);
  EXPECT_EQ(data.vt, VT_EMPTY);
}

TEST_F(Request, RefusesANegativeCount) { EXPECT_EQ(call(request_object().get(), L"BinaryRead", -1).hr, E_INVALIDARG); }

TEST_F(Request, HasAnEmptyClientCertificate) {
  EXPECT_EQ(get(collection(L"ClientCertificate"), L"Count").value.lVal, 0);
}

TEST_F(Request, EnumeratesNames) {
  request.query = "b=1&a=2&B=3";
  CComPtr<IUnknown> names;
  CComQIPtr<ZeltoTypeLibrary::IRequestDictionary> query(collection(L"QueryString").get());
  ASSERT_EQ(query->get__NewEnum(names.put()), S_OK);
  CComQIPtr<IEnumVARIANT> steps(names.get());
  VARIANT values[3]{};
  ULONG fetched = 0;
  EXPECT_EQ(steps->Next(3, values, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2u);
  EXPECT_EQ(korlib::view_of(values[0].bstrVal), L"b");
  EXPECT_EQ(korlib::view_of(values[1].bstrVal), L"a");
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
  EXPECT_EQ(text_of(default_of(list)), L"1");
}

}  // namespace
