#include "zelto/intrinsics/response_fixture.h"

namespace {

using namespace test;

class Response : public ResponseTest {};

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
  EXPECT_EQ(L"LCID: 99999 is not a locale that this host knows; 2048 is the neutral form.", refused.description);
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

TEST_F(Response, AppendsOneLineToTheLog) {
  call(response(), L"AppendToLog", L"a\r\nb");
  page().response.finish();
  EXPECT_EQ("a  b", sink.log);
}

// A page that calls it without end filled the memory, and its line the log.
TEST_F(Response, LeavesOutWhatIsTooMuchForALineOfTheLog) {
  const std::wstring piece(1000, L'\u00E9');
  for (int i = 0; i < 5; ++i) call(response(), L"AppendToLog", L"a" + piece);
  page().response.finish();
  EXPECT_EQ(8191u, sink.log.size()) << "half a character is none";
  EXPECT_TRUE(sink.log.ends_with("\xC3\xA9"));
}

TEST_F(Response, KnowsWhetherTheClientIsThere) {
  EXPECT_TRUE(is_true(get(response(), L"IsClientConnected")));
  sink.is_connected = false;
  EXPECT_FALSE(is_true(get(response(), L"IsClientConnected")));
}

// A template's literal text comes like this: some of it has a way of its own, and all must come out alike.
TEST_F(Response, TakesTextACharacterAtATime) {
  const std::wstring_view text = L"<p>a\u00E9\u3042\x7F\x80</p>";
  const auto write_each = [&] {
    for (const wchar_t c : text) EXPECT_EQ(S_OK, call(response(), L"Write", std::wstring(1, c)).hr);
  };
  const std::string bytes = "<p>a\xC3\xA9\xE3\x81\x82\x7F\xC2\x80</p>";
  write_each();
  EXPECT_EQ(0, sink.starts);
  call(response(), L"Flush");
  EXPECT_EQ(bytes, sink.body);
  write_each();
  EXPECT_EQ(bytes, sink.body);
  page().response.buffered = false;
  write_each();
  EXPECT_EQ(bytes + bytes + bytes, sink.body);
  page().response.finish();
  EXPECT_EQ(bytes + bytes + bytes, sink.body);
}

TEST_F(Response, EndsAPageWhoseClientHasGoneWithWhatItWritesNext) {
  EXPECT_EQ(S_OK, call(response(), L"Write", L"begins").hr);
  sink.has_failed = true;
  EXPECT_EQ(S_OK, call(response(), L"Write", L"kept in the buffer").hr);
  EXPECT_EQ(0, host.ends);
  EXPECT_EQ(FakePageHost::kEnded, call(response(), L"Flush").hr);
  EXPECT_EQ(FakePageHost::kEnded, call(response(), L"Write", L"more").hr);
  EXPECT_EQ(FakePageHost::kEnded, call(response(), L"BinaryWrite", L"more").hr);
  EXPECT_EQ(3, host.ends);
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
