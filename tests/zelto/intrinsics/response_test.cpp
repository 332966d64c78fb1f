#include <cmath>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "base/serial_date.h"
#include "text/http_date.h"
#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;
using Strings = std::vector<std::string>;

class Response : public PageTest {
 protected:
  IDispatch* response() {
    if (!object_) object_ = response_object();
    return object_.get();
  }
  CComPtr<IDispatch> cookie(const wchar_t* name) { return object_of(get(response(), L"Cookies", name)); }

 private:
  CComPtr<zelto::ResponseObject> object_;
};

TEST_F(Response, SendsWhatWasWrittenWithItsLength) {
  call(response(), L"Write", L"a\u00E9\u3042\U0001F600");
  call(response(), L"Write", 12);
  EXPECT_EQ(0, sink.starts);
  page().response.finish();
  EXPECT_EQ(
      "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"
      "12",
      sink.body);
  EXPECT_EQ(sink.body.size(), sink.length);
  EXPECT_EQ(200, sink.head.status);
  EXPECT_EQ(Strings{"text/html; charset=utf-8"}, sink.header("Content-Type"));
  EXPECT_EQ(Strings{"private"}, sink.header("Cache-Control"));
  EXPECT_EQ(1, sink.finishes);
}

TEST_F(Response, WritesInThePagesCodePage) {
  put(response(), L"CodePage", 932);
  call(response(), L"Write", L"\u3042\U0001F600x");
  page().response.finish();
  EXPECT_EQ("\x82\xA0?x", sink.body);
  EXPECT_EQ(Strings{"text/html; charset=shift_jis"}, sink.header("Content-Type"));
}

TEST_F(Response, SendsTextOfAnotherCodePageAtOnceWhenNotBuffered) {
  put(response(), L"CodePage", 932);
  put(response(), L"Buffer", false);
  call(response(), L"Write", L"\u3042");
  EXPECT_EQ("\x82\xA0", sink.body);
}

TEST_F(Response, ForgetsEverythingForAnErrorPage) {
  put(response(), L"Status", L"404 Not Found");
  put(response(), L"ContentType", L"text/plain");
  put(response(), L"Charset", L"us-ascii");
  put(response(), L"CodePage", 932);
  put(response(), L"LCID", 1041);
  put(response(), L"CacheControl", L"public");
  put(response(), L"Expires", 5);
  put(response(), L"Cookies", L"a", L"1");
  call(response(), L"AddHeader", L"X-A", L"1");
  call(response(), L"Write", L"text");
  EXPECT_TRUE(page().response.reset());
  EXPECT_EQ(65001, page().response.code_page);
  EXPECT_EQ(2048, page().response.lcid);
  page().response.finish();
  EXPECT_EQ("", sink.body);
  EXPECT_EQ(200, sink.head.status);
  EXPECT_EQ("OK", sink.head.reason);
  EXPECT_EQ(Strings{"text/html; charset=utf-8"}, sink.header("Content-Type"));
  EXPECT_EQ(Strings{"private"}, sink.header("Cache-Control"));
  EXPECT_EQ(2u, sink.head.headers.size());
  EXPECT_FALSE(page().response.reset());  // it is out
}

TEST_F(Response, RefusesACodePageThatDoesNotExist) {
  EXPECT_EQ(E_INVALIDARG, put(response(), L"CodePage", 12345).hr);
  EXPECT_EQ(65001, get(response(), L"CodePage").value.lVal);
}

TEST_F(Response, WritesEveryKindOfValueAsText) {
  EXPECT_EQ(S_OK, call(response(), L"Write", CComVariant()).hr);
  EXPECT_EQ(S_OK, call(response(), L"Write", null_value()).hr);
  EXPECT_EQ(S_OK, call(response(), L"Write", CComVariant(korlib::omitted())).hr);
  EXPECT_EQ(S_OK, call(response(), L"Write", value_of({value_of(1), null_value(), value_of(L"b")})).hr);
  EXPECT_EQ(S_OK, call(response(), L"Write", true).hr);
  EXPECT_EQ(S_OK, call(response(), L"Write", response_object()).hr);
  CComVariant typed(1.5);
  EXPECT_EQ(S_OK, response_object()->Write(typed));
  page().response.finish();
  EXPECT_EQ("1,,bTrue[object Object]1.5", sink.body);
}

TEST_F(Response, SendsNothingForNothing) {
  put(response(), L"Buffer", false);
  call(response(), L"Write", null_value());
  EXPECT_EQ(0, sink.starts);
}

TEST_F(Response, WritesDatesAndNumbersInItsLocale) {
  CComVariant date(36925.25);  // 2001-02-03, a quarter of a day on
  date.vt = VT_DATE;
  EXPECT_EQ(2048, get(response(), L"LCID").value.lVal);
  for (const int lcid : {1031, 1033, 2048}) {
    EXPECT_EQ(S_OK, put(response(), L"LCID", lcid).hr);
    EXPECT_EQ(lcid, get(response(), L"LCID").value.lVal);
    call(response(), L"Write", date);
    call(response(), L"Write", L" ");
    call(response(), L"Write", 1.5);
    call(response(), L"Write", L"|");
  }
  page().response.finish();
  EXPECT_EQ("03.02.2001 06:00:00 1,5|2/3/2001 6:00:00 AM 1.5|2001-02-03 06:00:00 1.5|", sink.body);
}

TEST_F(Response, NamesTheLocaleThatItDoesNotKnow) {
  put(response(), L"LCID", 1031);
  const Answer refused = put(response(), L"LCID", 99999);
  EXPECT_EQ(E_INVALIDARG, refused.hr);
  EXPECT_EQ(L"LCID: 99999 is no locale that this host knows; 2048 is the neutral form.", refused.description);
  EXPECT_EQ(1031, get(response(), L"LCID").value.lVal);
}

TEST_F(Response, WritesBytesAsTheyAre) {
  call(response(), L"BinaryWrite", std::vector<std::uint8_t>{0, 255, 128});
  const Answer refused = call(response(), L"BinaryWrite", 5);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, refused.hr);
  EXPECT_EQ(L"BinaryWrite takes an array of bytes, or text.", refused.description);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(response(), L"BinaryWrite", value_of({value_of(1)})).hr);
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", null_value()).hr);
  CComVariant bytes = value_of(std::vector<std::uint8_t>{7});
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", by_reference(&bytes)).hr);
  page().response.finish();
  EXPECT_EQ(std::string("\0\xFF\x80\7", 4), sink.body);
}

TEST_F(Response, WritesTheBytesOfTextInItsCodePage) {
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", L"\u00E9").hr);
  put(response(), L"CodePage", 1252);
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", L"\u00E9\u3042").hr);
  page().response.finish();
  EXPECT_EQ("\xC3\xA9\xE9?", sink.body);
}

// A database field, say.
class Blob final : public korlib::DispatchObject<Blob> {
 public:
  static std::span<const korlib::Member> members() {
    static constexpr korlib::Member table[] = {property<&Blob::get_Value>(L"Value").is_default()};
    return table;
  }
  HRESULT get_Value(VARIANT* value) { return VariantCopy(value, &held); }
  CComVariant held;
};

TEST_F(Response, WritesTheBytesThatAnObjectStandsFor) {
  const auto blob = korlib::make<Blob>();
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", blob).hr);
  blob->held = value_of(std::vector<std::uint8_t>{1, 254});
  EXPECT_EQ(S_OK, call(response(), L"BinaryWrite", blob).hr);
  blob->held = value_of(12);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(response(), L"BinaryWrite", blob).hr);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(response(), L"BinaryWrite", response_object()).hr);
  page().response.finish();
  EXPECT_EQ("\1\xFE", sink.body);
}

TEST_F(Response, RedirectsAndEndsThePage) {
  call(response(), L"Write", L"dropped");
  EXPECT_EQ(FakePageHost::kEnded, call(response(), L"Redirect", L"/a b?x=\u00E9").hr);
  page().response.finish();
  EXPECT_EQ(302, sink.head.status);
  EXPECT_EQ(Strings{"/a%20b?x=%C3%A9"}, sink.header("Location"));
  EXPECT_EQ("", sink.body);
  EXPECT_EQ(1, host.ends);
}

TEST_F(Response, RefusesToRedirectOnceTheHeadIsOut) {
  call(response(), L"Flush");
  EXPECT_EQ(E_FAIL, call(response(), L"Redirect", L"/").hr);
  EXPECT_EQ(0, host.ends);
}

TEST_F(Response, RefusesLineBreaksInWhateverGoesIntoTheHead) {
  EXPECT_EQ(E_INVALIDARG, call(response(), L"Redirect", L"/\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, call(response(), L"AddHeader", L"X", L"a\nb").hr);
  EXPECT_EQ(E_INVALIDARG, call(response(), L"AddHeader", L"X", std::wstring(L"a\0b", 3)).hr);
  EXPECT_EQ(E_INVALIDARG, call(response(), L"AddHeader", L"X: y", L"a").hr);
  EXPECT_EQ(E_INVALIDARG, call(response(), L"AddHeader", L"", L"a").hr);
  EXPECT_EQ(E_INVALIDARG, put(response(), L"Status", L"200 OK\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, put(response(), L"ContentType", L"text/html\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, put(response(), L"Charset", L"utf-8\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, put(response(), L"CacheControl", L"a\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, put(cookie(L"a"), L"Domain", L"x\r\nX: 1").hr);
  EXPECT_EQ(E_INVALIDARG, put(cookie(L"a"), L"Path", L"/; Secure").hr);
  EXPECT_EQ(E_INVALIDARG, put(cookie(L"a"), L"Path", L"/\x7F").hr);
  page().response.finish();
  EXPECT_EQ(3u, sink.head.headers.size());  // type, cache control, and the cookie that was named
}

TEST_F(Response, AddsHeadersWithoutReplacing) {
  call(response(), L"AddHeader", L"X-A", L"1");
  call(response(), L"AddHeader", L"X-A", L"2");
  page().response.finish();
  EXPECT_EQ((Strings{"1", "2"}), sink.header("x-a"));
}

TEST_F(Response, SetsTypeAndCachingAlsoByTheirHeaders) {
  call(response(), L"AddHeader", L"content-type", L"application/json");
  call(response(), L"AddHeader", L"cache-control", L"no-store");
  EXPECT_EQ(L"application/json", text_of(get(response(), L"ContentType")));
  EXPECT_EQ(L"no-store", text_of(get(response(), L"CacheControl")));
  page().response.finish();
  EXPECT_EQ(Strings{"application/json"}, sink.header("Content-Type"));
  EXPECT_EQ(Strings{"no-store"}, sink.header("Cache-Control"));
}

TEST_F(Response, EscapesWhatNoAddressHolds) {
  call(response(), L"Redirect", L"/a\"<>\\^`{|}~!\u00E9?b=%20#c");
  page().response.finish();
  EXPECT_EQ(Strings{"/a%22%3C%3E%5C%5E%60%7B%7C%7D~!%C3%A9?b=%20#c"}, sink.header("Location"));
}

TEST_F(Response, LeavesTheFramingToTheConnection) {
  EXPECT_EQ(S_OK, call(response(), L"AddHeader", L"Content-Length", L"5").hr);
  page().response.finish();
  EXPECT_EQ(Strings{}, sink.header("Content-Length"));
}

TEST_F(Response, TakesStatusTypeAndCharset) {
  EXPECT_EQ(S_OK, put(response(), L"Status", L"404 Not Found").hr);
  EXPECT_EQ(L"404 Not Found", text_of(get(response(), L"Status")));
  put(response(), L"ContentType", L"application/json");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(404, sink.head.status);
  EXPECT_EQ("Not Found", sink.head.reason);
  EXPECT_EQ(Strings{"application/json; charset=utf-8"}, sink.header("Content-Type"));
}

TEST_F(Response, LeavesTheCharsetOutForWhatIsNoText) {
  put(response(), L"ContentType", L"image/png");
  page().response.finish();
  EXPECT_EQ(Strings{"image/png"}, sink.header("Content-Type"));
}

TEST_F(Response, AddsNoCharsetToATypeThatHasOne) {
  put(response(), L"ContentType", L"text/html; Charset=iso-8859-1");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(Strings{"text/html; Charset=iso-8859-1"}, sink.header("Content-Type"));
}

TEST_F(Response, RefusesWhatIsNoStatus) {
  for (const wchar_t* line : {L"", L"20", L"abc", L"2000", L"099 X", L"100 Continue", L"600 X", L"404Not"}) {
    EXPECT_EQ(E_INVALIDARG, put(response(), L"Status", line).hr) << testing::PrintToString(std::wstring(line));
  }
}

TEST_F(Response, ClearsAndFlushesWhileBuffered) {
  call(response(), L"Write", L"gone");
  EXPECT_EQ(S_OK, call(response(), L"Clear").hr);
  call(response(), L"Write", L"one");
  EXPECT_EQ(S_OK, call(response(), L"Flush").hr);
  EXPECT_EQ("one", sink.body);
  EXPECT_EQ(zelto::ResponseSink::kUnknownLength, sink.length);
  call(response(), L"Write", L"two");
  page().response.finish();
  EXPECT_EQ("onetwo", sink.body);
  EXPECT_EQ(1, sink.starts);
}

TEST_F(Response, SendsAtOnceWhenNotBuffered) {
  EXPECT_EQ(S_OK, put(response(), L"Buffer", false).hr);
  EXPECT_FALSE(is_true(get(response(), L"Buffer")));
  call(response(), L"Write", L"a");
  EXPECT_EQ("a", sink.body);
  EXPECT_EQ(E_FAIL, call(response(), L"Clear").hr);
  EXPECT_EQ(E_FAIL, call(response(), L"Flush").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Buffer", true).hr);
}

TEST_F(Response, SendsABodyBeyondTheBufferOnAsItComes) {
  const std::wstring piece(std::size_t{1024} * 1024, L'\u00E9');
  for (int i = 0; i < 3; ++i) call(response(), L"Write", piece);
  EXPECT_EQ(1, sink.starts);
  page().response.finish();
  EXPECT_EQ(std::size_t{6} * 1024 * 1024, sink.body.size());
  EXPECT_EQ(std::string::npos, sink.body.find_first_not_of("\xC3\xA9"));
}

TEST_F(Response, RefusesChangesOfAHeadThatIsOut) {
  call(response(), L"Flush");
  EXPECT_EQ(E_FAIL, call(response(), L"AddHeader", L"X", L"1").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Status", L"404 Not Found").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"ContentType", L"text/plain").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Cookies", L"a", L"1").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Expires", 1).hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Charset", L"utf-8").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"CacheControl", L"public").hr);
  EXPECT_EQ(E_FAIL, put(response(), L"Buffer", false).hr);
}

TEST_F(Response, SetsCookiesThatScriptsOfTheClientCannotRead) {
  EXPECT_EQ(S_OK, put(response(), L"Cookies", L"a", L"x y;=").hr);
  page().response.finish();
  EXPECT_EQ(Strings{"a=x+y%3B%3D; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

TEST_F(Response, SetsCookieKeysAndAttributes) {
  put(cookie(L"user"), L"Item", L"name", L"Ann");
  put(cookie(L"USER"), L"Item", L"city", L"K\u00F6ln");
  put(cookie(L"user"), L"Item", L"Name", L"Bob");
  put(cookie(L"user"), L"Domain", L"example.org");
  put(cookie(L"user"), L"Path", L"/shop");
  put(cookie(L"user"), L"Secure", true);
  put(cookie(L"user"), L"HttpOnly", false);
  put(cookie(L"user"), L"SameSite", L"none");
  CComVariant date(25569.0);
  date.vt = VT_DATE;
  put(cookie(L"user"), L"Expires", date);
  EXPECT_TRUE(is_true(get(cookie(L"user"), L"HasKeys")));
  EXPECT_EQ(E_INVALIDARG, put(cookie(L"user"), L"SameSite", L"sometimes").hr);
  page().response.finish();
  EXPECT_EQ(Strings{"user=name=Bob&city=K%C3%B6ln; Expires=" + zelto::http_date_of(25569.0) +
                    "; Domain=example.org; Path=/shop; Secure; SameSite=None"},
            sink.header("Set-Cookie"));
}

TEST_F(Response, ReplacesACookiesKeysWithItsValue) {
  put(cookie(L"a"), L"Item", L"k", L"v");
  put(response(), L"Cookies", L"a", L"whole");
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  page().response.finish();
  EXPECT_EQ(Strings{"a=whole; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

TEST_F(Response, NeedsANameForACookie) {
  const Answer refused = put(response(), L"Cookies", L"", L"1");
  EXPECT_EQ(E_INVALIDARG, refused.hr);
  EXPECT_EQ(L"A cookie needs a name.", refused.description);
  page().response.finish();
  EXPECT_EQ(Strings{}, sink.header("Set-Cookie"));
}

TEST_F(Response, SetsNoCookieThatIsOnlyLookedAt) {
  EXPECT_EQ(L"", text_of(get(cookie(L"a"), L"Item", L"key")));
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  put(cookie(L"b"), L"Item", L"k", L"v");
  EXPECT_EQ(L"v", text_of(get(cookie(L"B"), L"Item", L"K")));
  page().response.finish();
  EXPECT_EQ(Strings{"b=k=v; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

TEST_F(Response, WritesExpiryAsADate) {
  CComVariant date(34644.0);
  date.vt = VT_DATE;
  EXPECT_EQ(S_OK, put(response(), L"ExpiresAbsolute", date).hr);
  EXPECT_EQ(34644.0, get(response(), L"ExpiresAbsolute").value.date);
  put(response(), L"CacheControl", L"public");
  page().response.finish();
  EXPECT_EQ(Strings{zelto::http_date_of(34644.0)}, sink.header("Expires"));
  EXPECT_EQ(Strings{"public"}, sink.header("Cache-Control"));
}

// Half a year ahead, so that the clock is put forward or back once until then.
TEST_F(Response, WritesMinutesUntilExpiryAsADate) {
  const char* const zone = std::getenv("TZ");
  const std::optional<std::string> before_test = zone ? std::optional<std::string>(zone) : std::nullopt;
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  for (const int minutes : {5, -5, 182 * 1440}) {
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(S_OK, put(response(), L"Expires", minutes).hr);
    const std::time_t after = std::time(nullptr);
    const auto written = zelto::parse_http_date(zelto::http_date_of(get(response(), L"ExpiresAbsolute").value.date));
    ASSERT_TRUE(written);
    EXPECT_GE(*written, before + minutes * 60);
    EXPECT_LE(*written, after + minutes * 60);
  }
  page().response.finish();
  EXPECT_EQ(Strings{zelto::http_date_of(get(response(), L"ExpiresAbsolute").value.date)}, sink.header("Expires"));
  before_test ? setenv("TZ", before_test->c_str(), 1) : unsetenv("TZ");
  tzset();
}

// It was the difference to a clock that had gone on: -1.000000003.
TEST_F(Response, ReadsTheMinutesThatWereSet) {
  EXPECT_EQ(VT_EMPTY, get(response(), L"Expires").value.vt);
  for (const double minutes : {-1.0, 0.0, 5.0, 1.5, 0.1, -1440.0, 1e300}) {
    EXPECT_EQ(S_OK, put(response(), L"Expires", minutes).hr);
    EXPECT_EQ(minutes, get(response(), L"Expires").value.dblVal);
  }
  // After a date, those that are left.
  const std::time_t before = std::time(nullptr);
  CComVariant date(base::local_date(before + 5400));
  date.vt = VT_DATE;
  put(response(), L"ExpiresAbsolute", date);
  const double left = get(response(), L"Expires").value.dblVal;
  EXPECT_LE(left, 90);
  EXPECT_GE(left, 90 - static_cast<double>(std::time(nullptr) - before) / 60);
  // An error page begins anew.
  ASSERT_TRUE(page().response.reset());
  EXPECT_EQ(VT_EMPTY, get(response(), L"Expires").value.vt);
}

TEST_F(Response, TakesADateFromText) {
  const CComVariant text(L"Thu, 04 Jul 2030 10:30:15 GMT");
  EXPECT_EQ(S_OK, put(response(), L"ExpiresAbsolute", text).hr);
  EXPECT_EQ(S_OK, put(cookie(L"a"), L"Expires", text).hr);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, put(response(), L"ExpiresAbsolute", L"13/32/2030").hr);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, put(cookie(L"a"), L"Expires", L"Feb 30, 2030").hr);
  page().response.finish();
  EXPECT_EQ(Strings{"Thu, 04 Jul 2030 10:30:15 GMT"}, sink.header("Expires"));
  EXPECT_EQ(Strings{"a=; Expires=Thu, 04 Jul 2030 10:30:15 GMT; Path=/; HttpOnly; SameSite=Lax"},
            sink.header("Set-Cookie"));
}

TEST_F(Response, WritesAnExpiryBeyondAllDatesAsTheLast) {
  EXPECT_EQ(S_OK, put(response(), L"Expires", 1e300).hr);
  page().response.finish();
  EXPECT_EQ(Strings{zelto::http_date_of(2958465)}, sink.header("Expires"));
}

TEST_F(Response, AppendsOneLineToTheLog) {
  call(response(), L"AppendToLog", L"a\r\nb");
  page().response.finish();
  EXPECT_EQ("a  b", sink.log);
}

TEST_F(Response, KnowsWhetherTheClientIsThere) {
  EXPECT_TRUE(is_true(get(response(), L"IsClientConnected")));
  sink.is_connected = false;
  EXPECT_FALSE(is_true(get(response(), L"IsClientConnected")));
}

TEST_F(Response, DropsWhatIsWrittenAfterThePage) {
  page().response.finish();
  page().response.detach();
  EXPECT_EQ(S_OK, call(response(), L"Write", L"late").hr);
  EXPECT_FALSE(is_true(get(response(), L"IsClientConnected")));
  EXPECT_EQ("", sink.body);
}

TEST_F(Response, NamesTheMemberThatItDoesNotHave) {
  EXPECT_EQ(DISP_E_UNKNOWNNAME, get(response(), L"NoSuchMember").hr);
}

}  // namespace
