#include "text/http_date.h"
#include "zelto/intrinsics/response_fixture.h"

namespace {

using namespace test;

class ResponseCookies : public ResponseTest {};

TEST_F(ResponseCookies, SetsCookiesThatScriptsOfTheClientCannotRead) {
  EXPECT_EQ(S_OK, put(response(), L"Cookies", L"a", L"x y;=").hr);
  page().response.finish();
  EXPECT_EQ(Strings{"a=x+y%3B%3D; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

TEST_F(ResponseCookies, SetsCookieKeysAndAttributes) {
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

TEST_F(ResponseCookies, ReplacesACookiesKeysWithItsValue) {
  put(cookie(L"a"), L"Item", L"k", L"v");
  put(response(), L"Cookies", L"a", L"whole");
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  page().response.finish();
  EXPECT_EQ(Strings{"a=whole; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

TEST_F(ResponseCookies, NeedsANameForACookie) {
  const Answer refused = put(response(), L"Cookies", L"", L"1");
  EXPECT_EQ(E_INVALIDARG, refused.hr);
  EXPECT_EQ(L"A cookie needs a name.", refused.description);
  page().response.finish();
  EXPECT_EQ(Strings{}, sink.header("Set-Cookie"));
}

TEST_F(ResponseCookies, SetsNoCookieThatIsOnlyLookedAt) {
  EXPECT_EQ(L"", text_of(get(cookie(L"a"), L"Item", L"key")));
  EXPECT_FALSE(is_true(get(cookie(L"a"), L"HasKeys")));
  put(cookie(L"b"), L"Item", L"k", L"v");
  EXPECT_EQ(L"v", text_of(get(cookie(L"B"), L"Item", L"K")));
  page().response.finish();
  EXPECT_EQ(Strings{"b=k=v; Path=/; HttpOnly; SameSite=Lax"}, sink.header("Set-Cookie"));
}

}  // namespace
