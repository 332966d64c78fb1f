#include <cmath>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "http/http_date.h"
#include "intrinsics/script_date.h"
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
  EXPECT_EQ(sink.starts, 0);
  page().response.finish();
  EXPECT_EQ(sink.body,
            "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"
            "12");
  EXPECT_EQ(sink.length, sink.body.size());
  EXPECT_EQ(sink.head.status, 200);
  EXPECT_EQ(sink.header("Content-Type"), Strings{"text/html; charset=utf-8"});
  EXPECT_EQ(sink.header("Cache-Control"), Strings{"private"});
  EXPECT_EQ(sink.finishes, 1);
}

TEST_F(Response, WritesInThePagesCodePage) {
  put(response(), L"CodePage", 932);
  call(response(), L"Write", L"\u3042\U0001F600x");
  page().response.finish();
  EXPECT_EQ(sink.body, "\x82\xA0?x");
  EXPECT_EQ(sink.header("Content-Type"), Strings{"text/html; charset=shift_jis"});
}

TEST_F(Response, SendsTextOfAnotherCodePageAtOnceWhenNotBuffered) {
  put(response(), L"CodePage", 932);
  put(response(), L"Buffer", false);
  call(response(), L"Write", L"\u3042");
  EXPECT_EQ(sink.body, "\x82\xA0");
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
  EXPECT_EQ(page().response.code_page, 65001);
  EXPECT_EQ(page().response.lcid, 2048);
  page().response.finish();
  EXPECT_EQ(sink.body, "");
  EXPECT_EQ(sink.head.status, 200);
  EXPECT_EQ(sink.head.reason, "OK");
  EXPECT_EQ(sink.header("Content-Type"), Strings{"text/html; charset=utf-8"});
  EXPECT_EQ(sink.header("Cache-Control"), Strings{"private"});
  EXPECT_EQ(sink.head.headers.size(), 2u);
  EXPECT_FALSE(page().response.reset());  // it is out
}

TEST_F(Response, RefusesACodePageThatDoesNotExist) {
  EXPECT_EQ(put(response(), L"CodePage", 12345).hr, E_INVALIDARG);
  EXPECT_EQ(get(response(), L"CodePage").value.lVal, 65001);
}

TEST_F(Response, WritesEveryKindOfValueAsText) {
  EXPECT_EQ(call(response(), L"Write", CComVariant()).hr, S_OK);
  EXPECT_EQ(call(response(), L"Write", null_value()).hr, S_OK);
  EXPECT_EQ(call(response(), L"Write", CComVariant(korlib::omitted())).hr, S_OK);
  EXPECT_EQ(call(response(), L"Write", value_of({value_of(1), null_value(), value_of(L"b")})).hr, S_OK);
  EXPECT_EQ(call(response(), L"Write", true).hr, S_OK);
  EXPECT_EQ(call(response(), L"Write", response_object()).hr, S_OK);
  CComVariant typed(1.5);
  EXPECT_EQ(response_object()->Write(typed), S_OK);
  page().response.finish();
  EXPECT_EQ(sink.body, "1,,bTrue[object Object]1.5");
}

TEST_F(Response, SendsNothingForNothing) {
  put(response(), L"Buffer", false);
  call(response(), L"Write", null_value());
  EXPECT_EQ(sink.starts, 0);
}

TEST_F(Response, WritesDatesAndNumbersInItsLocale) {
  CComVariant date(36925.25);  // 2001-02-03, a quarter of a day on
  date.vt = VT_DATE;
  EXPECT_EQ(get(response(), L"LCID").value.lVal, 2048);
  for (const int lcid : {1031, 1033, 2048}) {
    EXPECT_EQ(put(response(), L"LCID", lcid).hr, S_OK);
    EXPECT_EQ(get(response(), L"LCID").value.lVal, lcid);
    call(response(), L"Write", date);
    call(response(), L"Write", L" ");
    call(response(), L"Write", 1.5);
    call(response(), L"Write", L"|");
  }
  page().response.finish();
  EXPECT_EQ(sink.body, "03.02.2001 06:00:00 1,5|2/3/2001 6:00:00 AM 1.5|2001-02-03 06:00:00 1.5|");
}

TEST_F(Response, NamesTheLocaleThatItDoesNotKnow) {
  put(response(), L"LCID", 1031);
  const Answer refused = put(response(), L"LCID", 99999);
  EXPECT_EQ(refused.hr, E_INVALIDARG);
  EXPECT_EQ(refused.description, L"LCID: 99999 is no locale that this host knows; 2048 is the neutral form.");
  EXPECT_EQ(get(response(), L"LCID").value.lVal, 1031);
}

TEST_F(Response, WritesBytesAsTheyAre) {
  call(response(), L"BinaryWrite", std::vector<std::uint8_t>{0, 255, 128});
  const Answer refused = call(response(), L"BinaryWrite", 5);
  EXPECT_EQ(refused.hr, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(refused.description, L"BinaryWrite takes an array of bytes, or text.");
  EXPECT_EQ(call(response(), L"BinaryWrite", value_of({value_of(1)})).hr, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(call(response(), L"BinaryWrite", null_value()).hr, S_OK);
  CComVariant bytes = value_of(std::vector<std::uint8_t>{7});
  EXPECT_EQ(call(response(), L"BinaryWrite", by_reference(&bytes)).hr, S_OK);
  page().response.finish();
  EXPECT_EQ(sink.body, std::string("\0\xFF\x80\7", 4));
}

TEST_F(Response, WritesTheBytesOfTextInItsCodePage) {
  EXPECT_EQ(call(response(), L"BinaryWrite", L"\u00E9").hr, S_OK);
  put(response(), L"CodePage", 1252);
  EXPECT_EQ(call(response(), L"BinaryWrite", L"\u00E9\u3042").hr, S_OK);
  page().response.finish();
  EXPECT_EQ(sink.body, "\xC3\xA9\xE9?");
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
  EXPECT_EQ(call(response(), L"BinaryWrite", blob).hr, S_OK);
  blob->held = value_of(std::vector<std::uint8_t>{1, 254});
  EXPECT_EQ(call(response(), L"BinaryWrite", blob).hr, S_OK);
  blob->held = value_of(12);
  EXPECT_EQ(call(response(), L"BinaryWrite", blob).hr, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(call(response(), L"BinaryWrite", response_object()).hr, DISP_E_TYPEMISMATCH);
  page().response.finish();
  EXPECT_EQ(sink.body, "\1\xFE");
}

TEST_F(Response, RedirectsAndEndsThePage) {
  call(response(), L"Write", L"dropped");
  EXPECT_EQ(call(response(), L"Redirect", L"/a b?x=\u00E9").hr, FakePageHost::kEnded);
  page().response.finish();
  EXPECT_EQ(sink.head.status, 302);
  EXPECT_EQ(sink.header("Location"), Strings{"/a%20b?x=%C3%A9"});
  EXPECT_EQ(sink.body, "");
  EXPECT_EQ(host.ends, 1);
}

TEST_F(Response, RefusesToRedirectOnceTheHeadIsOut) {
  call(response(), L"Flush");
  EXPECT_EQ(call(response(), L"Redirect", L"/").hr, E_FAIL);
  EXPECT_EQ(host.ends, 0);
}

TEST_F(Response, RefusesLineBreaksInWhateverGoesIntoTheHead) {
  EXPECT_EQ(call(response(), L"Redirect", L"/\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(call(response(), L"AddHeader", L"X", L"a\nb").hr, E_INVALIDARG);
  EXPECT_EQ(call(response(), L"AddHeader", L"X", std::wstring(L"a\0b", 3)).hr, E_INVALIDARG);
  EXPECT_EQ(call(response(), L"AddHeader", L"X: y", L"a").hr, E_INVALIDARG);
  EXPECT_EQ(call(response(), L"AddHeader", L"", L"a").hr, E_INVALIDARG);
  EXPECT_EQ(put(response(), L"Status", L"200 OK\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(put(response(), L"ContentType", L"text/html\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(put(response(), L"Charset", L"utf-8\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(put(response(), L"CacheControl", L"a\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(put(cookie(L"a"), L"Domain", L"x\r\nX: 1").hr, E_INVALIDARG);
  EXPECT_EQ(put(cookie(L"a"), L"Path", L"/; Secure").hr, E_INVALIDARG);
  EXPECT_EQ(put(cookie(L"a"), L"Path", L"/\x7F").hr, E_INVALIDARG);
  page().response.finish();
  EXPECT_EQ(sink.head.headers.size(), 3u);  // type, cache control, and the cookie that was named
}

TEST_F(Response, AddsHeadersWithoutReplacing) {
  call(response(), L"AddHeader", L"X-A", L"1");
  call(response(), L"AddHeader", L"X-A", L"2");
  page().response.finish();
  EXPECT_EQ(sink.header("x-a"), (Strings{"1", "2"}));
}

TEST_F(Response, SetsTypeAndCachingAlsoByTheirHeaders) {
  call(response(), L"AddHeader", L"content-type", L"application/json");
  call(response(), L"AddHeader", L"cache-control", L"no-store");
  EXPECT_EQ(text_of(get(response(), L"ContentType")), L"application/json");
  EXPECT_EQ(text_of(get(response(), L"CacheControl")), L"no-store");
  page().response.finish();
  EXPECT_EQ(sink.header("Content-Type"), Strings{"application/json"});
  EXPECT_EQ(sink.header("Cache-Control"), Strings{"no-store"});
}

TEST_F(Response, EscapesWhatNoAddressHolds) {
  call(response(), L"Redirect", L"/a\"<>\\^`{|}~!\u00E9?b=%20#c");
  page().response.finish();
  EXPECT_EQ(sink.header("Location"), Strings{"/a%22%3C%3E%5C%5E%60%7B%7C%7D~!%C3%A9?b=%20#c"});
}

TEST_F(Response, LeavesTheFramingToTheConnection) {
  EXPECT_EQ(call(response(), L"AddHeader", L"Content-Length", L"5").hr, S_OK);
  page().response.finish();
  EXPECT_EQ(sink.header("Content-Length"), Strings{});
}

TEST_F(Response, TakesStatusTypeAndCharset) {
  EXPECT_EQ(put(response(), L"Status", L"404 Not Found").hr, S_OK);
  EXPECT_EQ(text_of(get(response(), L"Status")), L"404 Not Found");
  put(response(), L"ContentType", L"application/json");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(sink.head.status, 404);
  EXPECT_EQ(sink.head.reason, "Not Found");
  EXPECT_EQ(sink.header("Content-Type"), Strings{"application/json; charset=utf-8"});
}

TEST_F(Response, LeavesTheCharsetOutForWhatIsNoText) {
  put(response(), L"ContentType", L"image/png");
  page().response.finish();
  EXPECT_EQ(sink.header("Content-Type"), Strings{"image/png"});
}

TEST_F(Response, AddsNoCharsetToATypeThatHasOne) {
  put(response(), L"ContentType", L"text/html; Charset=iso-8859-1");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(sink.header("Content-Type"), Strings{"text/html; Charset=iso-8859-1"});
}

TEST_F(Response, RefusesWhatIsNoStatus) {
  for (const wchar_t* line : {L"", L"20", L"abc", L"2000", L"099 X", L"100 Continue", L"600 X", L"404Not"}) {
    EXPECT_EQ(put(response(), L"Status", line).hr, E_INVALIDARG) << testing::PrintToString(std::wstring(line));
  }
}

TEST_F(Response, ClearsAndFlushesWhileBuffered) {
  call(response(), L"Write", L"gone");
  EXPECT_EQ(call(response(), L"Clear").hr, S_OK);
  call(response(), L"Write", L"one");
  EXPECT_EQ(call(response(), L"Flush").hr, S_OK);
  EXPECT_EQ(sink.body, "one");
  EXPECT_EQ(sink.length, zelto::ResponseSink::kUnknownLength);
  call(response(), L"Write", L"two");
  page().response.finish();
  EXPECT_EQ(sink.body, "onetwo");
  EXPECT_EQ(sink.starts, 1);
}

TEST_F(Response, SendsAtOnceWhenNotBuffered) {
  EXPECT_EQ(put(response(), L"Buffer", false).hr, S_OK);
  EXPECT_FALSE(is_true(get(response(), L"Buffer")));
  call(response(), L"Write", L"a");
  EXPECT_EQ(sink.body, "a");
  EXPECT_EQ(call(response(), L"Clear").hr, E_FAIL);
  EXPECT_EQ(call(response(), L"Flush").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Buffer", true).hr, E_FAIL);
}

TEST_F(Response, SendsABodyBeyondTheBufferOnAsItComes) {
  const std::wstring piece(std::size_t{1024} * 1024, L'\u00E9');
  for (int i = 0; i < 3; ++i) call(response(), L"Write", piece);
  EXPECT_EQ(sink.starts, 1);
  page().response.finish();
  EXPECT_EQ(sink.body.size(), std::size_t{6} * 1024 * 1024);
  EXPECT_EQ(sink.body.find_first_not_of("\xC3\xA9"), std::string::npos);
}

TEST_F(Response, RefusesChangesOfAHeadThatIsOut) {
  call(response(), L"Flush");
  EXPECT_EQ(call(response(), L"AddHeader", L"X", L"1").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Status", L"404 Not Found").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"ContentType", L"text/plain").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Cookies", L"a", L"1").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Expires", 1).hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Charset", L"utf-8").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"CacheControl", L"public").hr, E_FAIL);
  EXPECT_EQ(put(response(), L"Buffer", false).hr, E_FAIL);
}

TEST_F(Response, SetsCookiesThatScriptsOfTheClientCannotRead) {
  EXPECT_EQ(put(response(), L"Cookies", L"a", L"x y;=").hr, S_OK);
  page().response.finish();
  EXPECT_EQ(sink.header("Set-Cookie"), Strings{"a=x+y%3B%3D; Path=/; HttpOnly; SameSite=Lax"});
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
  EXPECT_EQ(put(cookie(L"user"), L"SameSite", L"sometimes").hr, E_INVALIDARG);
  page().response.finish();
  EXPECT_EQ(sink.header("Set-Cookie"), Strings{"user=name=Bob&city=K%C3%B6ln; Expires=" + zelto::http_date_of(25569.0) +
                                               "; Domain=example.org; Path=/shop; Secure; SameSite=None"});
}

TEST_F(Response, ReplacesACookiesKeysWithItsValue) {
  put(cookie(L"a"), L"Item", L"k", L"v");
  put(response(), L"Cookies", L"a", L"whole");
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  page().response.finish();
  EXPECT_EQ(sink.header("Set-Cookie"), Strings{"a=whole; Path=/; HttpOnly; SameSite=Lax"});
}

TEST_F(Response, NeedsANameForACookie) {
  const Answer refused = put(response(), L"Cookies", L"", L"1");
  EXPECT_EQ(refused.hr, E_INVALIDARG);
  EXPECT_EQ(refused.description, L"A cookie needs a name.");
  page().response.finish();
  EXPECT_EQ(sink.header("Set-Cookie"), Strings{});
}

TEST_F(Response, SetsNoCookieThatIsOnlyLookedAt) {
  EXPECT_EQ(text_of(get(cookie(L"a"), L"Item", L"key")), L"");
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  put(cookie(L"b"), L"Item", L"k", L"v");
  EXPECT_EQ(text_of(get(cookie(L"B"), L"Item", L"K")), L"v");
  page().response.finish();
  EXPECT_EQ(sink.header("Set-Cookie"), Strings{"b=k=v; Path=/; HttpOnly; SameSite=Lax"});
}

TEST_F(Response, WritesExpiryAsADate) {
  CComVariant date(34644.0);
  date.vt = VT_DATE;
  EXPECT_EQ(put(response(), L"ExpiresAbsolute", date).hr, S_OK);
  EXPECT_EQ(get(response(), L"ExpiresAbsolute").value.date, 34644.0);
  put(response(), L"CacheControl", L"public");
  page().response.finish();
  EXPECT_EQ(sink.header("Expires"), Strings{zelto::http_date_of(34644.0)});
  EXPECT_EQ(sink.header("Cache-Control"), Strings{"public"});
}

// Half a year ahead, so that the clock is put forward or back once until then.
TEST_F(Response, WritesMinutesUntilExpiryAsADate) {
  const char* const zone = std::getenv("TZ");
  const std::optional<std::string> before_test = zone ? std::optional<std::string>(zone) : std::nullopt;
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  for (const int minutes : {5, -5, 182 * 1440}) {
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(put(response(), L"Expires", minutes).hr, S_OK);
    const std::time_t after = std::time(nullptr);
    const auto written = zelto::parse_http_date(zelto::http_date_of(get(response(), L"ExpiresAbsolute").value.date));
    ASSERT_TRUE(written);
    EXPECT_GE(*written, before + minutes * 60);
    EXPECT_LE(*written, after + minutes * 60);
  }
  page().response.finish();
  EXPECT_EQ(sink.header("Expires"), Strings{zelto::http_date_of(get(response(), L"ExpiresAbsolute").value.date)});
  before_test ? setenv("TZ", before_test->c_str(), 1) : unsetenv("TZ");
  tzset();
}

// It was the difference to a clock that had gone on: -1.000000003.
TEST_F(Response, ReadsTheMinutesThatWereSet) {
  EXPECT_EQ(get(response(), L"Expires").value.vt, VT_EMPTY);
  for (const double minutes : {-1.0, 0.0, 5.0, 1.5, 0.1, -1440.0, 1e300}) {
    EXPECT_EQ(put(response(), L"Expires", minutes).hr, S_OK);
    EXPECT_EQ(get(response(), L"Expires").value.dblVal, minutes);
  }
  // After a date, those that are left.
  const std::time_t before = std::time(nullptr);
  CComVariant date(zelto::date_of(before + 5400));
  date.vt = VT_DATE;
  put(response(), L"ExpiresAbsolute", date);
  const double left = get(response(), L"Expires").value.dblVal;
  EXPECT_LE(left, 90);
  EXPECT_GE(left, 90 - static_cast<double>(std::time(nullptr) - before) / 60);
  // An error page begins anew.
  ASSERT_TRUE(page().response.reset());
  EXPECT_EQ(get(response(), L"Expires").value.vt, VT_EMPTY);
}

TEST_F(Response, TakesADateFromText) {
  const CComVariant text(L"Thu, 04 Jul 2030 10:30:15 GMT");
  EXPECT_EQ(put(response(), L"ExpiresAbsolute", text).hr, S_OK);
  EXPECT_EQ(put(cookie(L"a"), L"Expires", text).hr, S_OK);
  EXPECT_EQ(put(response(), L"ExpiresAbsolute", L"13/32/2030").hr, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(put(cookie(L"a"), L"Expires", L"Feb 30, 2030").hr, DISP_E_TYPEMISMATCH);
  page().response.finish();
  EXPECT_EQ(sink.header("Expires"), Strings{"Thu, 04 Jul 2030 10:30:15 GMT"});
  EXPECT_EQ(sink.header("Set-Cookie"),
            Strings{"a=; Expires=Thu, 04 Jul 2030 10:30:15 GMT; Path=/; HttpOnly; SameSite=Lax"});
}

TEST_F(Response, WritesAnExpiryBeyondAllDatesAsTheLast) {
  EXPECT_EQ(put(response(), L"Expires", 1e300).hr, S_OK);
  page().response.finish();
  EXPECT_EQ(sink.header("Expires"), Strings{zelto::http_date_of(2958465)});
}

TEST_F(Response, AppendsOneLineToTheLog) {
  call(response(), L"AppendToLog", L"a\r\nb");
  page().response.finish();
  EXPECT_EQ(sink.log, "a  b");
}

TEST_F(Response, KnowsWhetherTheClientIsThere) {
  EXPECT_TRUE(is_true(get(response(), L"IsClientConnected")));
  sink.is_connected = false;
  EXPECT_FALSE(is_true(get(response(), L"IsClientConnected")));
}

TEST_F(Response, DropsWhatIsWrittenAfterThePage) {
  page().response.finish();
  page().response.detach();
  EXPECT_EQ(call(response(), L"Write", L"late").hr, S_OK);
  EXPECT_FALSE(is_true(get(response(), L"IsClientConnected")));
  EXPECT_EQ(sink.body, "");
}

TEST_F(Response, NamesTheMemberThatItDoesNotHave) {
  EXPECT_EQ(get(response(), L"NoSuchMember").hr, DISP_E_UNKNOWNNAME);
}

}  // namespace
