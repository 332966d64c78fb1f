#include "text/http_date.h"

#include <cstdlib>
#include <ctime>
#include <optional>

#include "base/serial_date.h"
#include "zelto/intrinsics/response_fixture.h"

namespace {

using namespace test;

class ResponseHead : public ResponseTest {};

TEST_F(ResponseHead, RedirectsAndEndsThePage) {
  call(response(), L"Write", L"dropped");
  EXPECT_EQ(FakePageHost::kEnded, call(response(), L"Redirect", L"/a b?x=\u00E9").hr);
  page().response.finish();
  EXPECT_EQ(302, sink.head.status);
  EXPECT_EQ(Strings{"/a%20b?x=%C3%A9"}, sink.header("Location"));
  EXPECT_EQ("", sink.body);
  EXPECT_EQ(1, host.ends);
}

TEST_F(ResponseHead, RefusesToRedirectOnceTheHeadIsOut) {
  call(response(), L"Flush");
  EXPECT_EQ(E_FAIL, call(response(), L"Redirect", L"/").hr);
  EXPECT_EQ(0, host.ends);
}

TEST_F(ResponseHead, RefusesLineBreaksInWhateverGoesIntoTheHead) {
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

TEST_F(ResponseHead, AddsHeadersWithoutReplacing) {
  call(response(), L"AddHeader", L"X-A", L"1");
  call(response(), L"AddHeader", L"X-A", L"2");
  page().response.finish();
  EXPECT_EQ((Strings{"1", "2"}), sink.header("x-a"));
}

TEST_F(ResponseHead, SetsTypeAndCachingAlsoByTheirHeaders) {
  call(response(), L"AddHeader", L"content-type", L"application/json");
  call(response(), L"AddHeader", L"cache-control", L"no-store");
  EXPECT_EQ(L"application/json", text_of(get(response(), L"ContentType")));
  EXPECT_EQ(L"no-store", text_of(get(response(), L"CacheControl")));
  page().response.finish();
  EXPECT_EQ(Strings{"application/json"}, sink.header("Content-Type"));
  EXPECT_EQ(Strings{"no-store"}, sink.header("Cache-Control"));
}

TEST_F(ResponseHead, EscapesWhatNoAddressHolds) {
  call(response(), L"Redirect", L"/a\"<>\\^`{|}~!\u00E9?b=%20#c");
  page().response.finish();
  EXPECT_EQ(Strings{"/a%22%3C%3E%5C%5E%60%7B%7C%7D~!%C3%A9?b=%20#c"}, sink.header("Location"));
}

TEST_F(ResponseHead, LeavesTheFramingToTheConnection) {
  EXPECT_EQ(S_OK, call(response(), L"AddHeader", L"Content-Length", L"5").hr);
  page().response.finish();
  EXPECT_EQ(Strings{}, sink.header("Content-Length"));
}

TEST_F(ResponseHead, TakesStatusTypeAndCharset) {
  EXPECT_EQ(S_OK, put(response(), L"Status", L"404 Not Found").hr);
  EXPECT_EQ(L"404 Not Found", text_of(get(response(), L"Status")));
  put(response(), L"ContentType", L"application/json");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(404, sink.head.status);
  EXPECT_EQ("Not Found", sink.head.reason);
  EXPECT_EQ(Strings{"application/json; charset=utf-8"}, sink.header("Content-Type"));
}

TEST_F(ResponseHead, LeavesTheCharsetOutForWhatIsNoText) {
  put(response(), L"ContentType", L"image/png");
  page().response.finish();
  EXPECT_EQ(Strings{"image/png"}, sink.header("Content-Type"));
}

TEST_F(ResponseHead, AddsNoCharsetToATypeThatHasOne) {
  put(response(), L"ContentType", L"text/html; Charset=iso-8859-1");
  put(response(), L"Charset", L"utf-8");
  page().response.finish();
  EXPECT_EQ(Strings{"text/html; Charset=iso-8859-1"}, sink.header("Content-Type"));
}

TEST_F(ResponseHead, RefusesWhatIsNoStatus) {
  for (const wchar_t* line : {L"", L"20", L"abc", L"2000", L"099 X", L"100 Continue", L"600 X", L"404Not"}) {
    EXPECT_EQ(E_INVALIDARG, put(response(), L"Status", line).hr) << testing::PrintToString(std::wstring(line));
  }
}

TEST_F(ResponseHead, RefusesChangesOfAHeadThatIsOut) {
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

TEST_F(ResponseHead, WritesExpiryAsADate) {
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
TEST_F(ResponseHead, WritesMinutesUntilExpiryAsADate) {
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
    EXPECT_GE(*written, before + std::time_t{60} * minutes);
    EXPECT_LE(*written, after + std::time_t{60} * minutes);
  }
  page().response.finish();
  EXPECT_EQ(Strings{zelto::http_date_of(get(response(), L"ExpiresAbsolute").value.date)}, sink.header("Expires"));
  before_test ? setenv("TZ", before_test->c_str(), 1) : unsetenv("TZ");
  tzset();
}

// It was the difference to a clock that had gone on: -1.000000003.
TEST_F(ResponseHead, ReadsTheMinutesThatWereSet) {
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

TEST_F(ResponseHead, TakesADateFromText) {
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

TEST_F(ResponseHead, WritesAnExpiryBeyondAllDatesAsTheLast) {
  EXPECT_EQ(S_OK, put(response(), L"Expires", 1e300).hr);
  page().response.finish();
  EXPECT_EQ(Strings{zelto::http_date_of(2958465)}, sink.header("Expires"));
}

}  // namespace
