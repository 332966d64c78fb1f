#include "http/framing.h"

#include <gtest/gtest.h>

#include <string>

#include "http/target.h"
#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

using namespace std::string_literals;

struct Row {
  std::string request;  // everything after it must not be taken for another request
  int status;
};

// Each is followed by the bytes of a second request: smuggled in when the two sides disagree about the end.
TEST(Framing, LeavesNoDoubtAboutTheEndOfARequest) {
  const std::string start = "POST /echo HTTP/1.1\r\nHost: a\r\n";
  const std::string length = "Content-Length: 4\r\n";
  const std::string chunked = "Transfer-Encoding: chunked\r\n";
  const std::vector<Row> rows = {
      {start + "Transfer-Encoding: xchunked\r\n\r\n", 501},
      {start + "Transfer-Encoding: gzip, chunked\r\n\r\n", 501},
      {start + "Transfer-Encoding: chunked, identity\r\n\r\n", 400},
      {start + "Transfer-Encoding: identity\r\n\r\n", 400},
      {start + "Transfer-Encoding: identity\r\n" + length + "\r\nabcd", 400},
      {start + "Transfer-Encoding:\r\n\r\n", 400},
      {start + "Transfer-Encoding: chunked, chunked\r\n\r\n0\r\n\r\n", 400},
      {start + chunked + chunked + "\r\n0\r\n\r\n", 400},
      {start + chunked + "Transfer-Encoding: identity\r\n\r\n0\r\n\r\n", 400},
      {"POST /echo HTTP/1.0\r\n" + chunked + "\r\n0\r\n\r\n", 400},
      {start + length + chunked + "\r\n0\r\n\r\n", 400},
      {start + chunked + length + "\r\n0\r\n\r\n", 400},
      {start + length + length + "\r\nabcd", 400},
      {start + "Content-Length: 4, 4\r\n\r\nabcd", 400},
      {start + length + "Content-Length: 5\r\n\r\nabcd", 400},
      {start + "Content-Length: +4\r\n\r\nabcd", 400},
      {start + "Content-Length: -4\r\n\r\nabcd", 400},
      {start + "Content-Length: 0x4\r\n\r\nabcd", 400},
      {start + "Content-Length: 18446744073709551616\r\n\r\nabcd", 400},
      {start + "Content-Length:\r\n\r\nabcd", 400},
      {start + "Content-Length : 4\r\n\r\nabcd", 400},
      {start + "Transfer-Encoding: chunked;q=1\r\n\r\n0\r\n\r\n", 501},
      {start + "Transfer-Encoding: \vchunked\r\n\r\n0\r\n\r\n", 400},
      {start + chunked + "\r\n0\r\nContent-Length: 4\r\n\r\n", 400},
      {start + chunked + "\r\n0\r\nTransfer-Encoding: chunked\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nHost: a\r\n\r\n", 400},
      {"GET /echo HTTP/1.0\r\nHost: a\r\nHost: b\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a b\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a/b\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: user@a\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a:b\r\n\r\n", 400},
      {"GET http://user@a/echo HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET http://a/echo HTTP/1.1\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nX: y\r\n z\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\n X: y\r\nHost: a\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\nHost: a\n\n", 400},
      {"GET /echo HTTP/1.1\r\r\nHost: a\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a%zz\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nX: y\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nX: y\rz\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nX: y\0z\r\n\r\n"s, 400},
      {"GET /ec\0ho HTTP/1.1\r\nHost: a\r\n\r\n"s, 400},
      {"GET /ec ho HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET  /echo HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET /echo\r\nHost: a\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\nNoColon\r\n\r\n", 400},
      {"GET /echo HTTP/1.1\r\nHost: a\r\n: nameless\r\n\r\n", 400},
      {"GET /\xC3\xA4 HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET /../../etc/passwd HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET * HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"OPTIONS * HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET a:80 HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"GET echo HTTP/1.1\r\nHost: a\r\n\r\n", 400},
      {"get /echo HTTP/1.1\r\nHost: a\r\n\r\n", 501},
      {"TRACE /echo HTTP/1.1\r\nHost: a\r\n\r\n", 501},
      {"CONNECT a:80 HTTP/1.1\r\nHost: a\r\n\r\n", 501},
      {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", 505},
  };
  TestServer test;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.request);
    Client client(test.port());
    client.send(row.request + "GET /echo HTTP/1.1\r\nHost: a\r\n\r\n");
    const auto answer = client.receive();
    ASSERT_TRUE(answer);
    EXPECT_EQ(row.status, answer->status);
    EXPECT_EQ("close", answer->header("Connection"));
    EXPECT_TRUE(client.at_end()) << "only one answer";
  }
}

// Each of these body beginnings has been read in more than one way by somebody.
TEST(Framing, TakesNoChunkThatIsNotWrittenAsOne) {
  const std::vector<std::string> bodies = {
      "1 \r\na\r\n0\r\n\r\n",
      " 1\r\na\r\n0\r\n\r\n",
      "0x1\r\na\r\n0\r\n\r\n",
      "+1\r\na\r\n0\r\n\r\n",
      "-1\r\na\r\n0\r\n\r\n",
      "\r\na\r\n0\r\n\r\n",
      "1\na\r\n0\r\n\r\n",
      "1\r\na\n0\r\n\r\n",
      "1\r\nab\r\n0\r\n\r\n",
      "1;x=\n\r\na\r\n0\r\n\r\n",
      "1;x=\ry\r\na\r\n0\r\n\r\n",
      "1;x=\0y\r\na\r\n0\r\n\r\n"s,
      "1;x=\"\r\na\"\r\n0\r\n\r\n",
      "10000000000000001\r\na\r\n0\r\n\r\n",
      "0\n\n",
      "0\r\n\n",
      "0\r\nX: y\n\r\n",
  };
  TestServer test;
  for (const std::string& body : bodies) {
    SCOPED_TRACE(body);
    Client client(test.port());
    client.send("POST /echo HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n" + body +
                "GET /echo HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_EQ(400, client.receive().value().status);
    EXPECT_TRUE(client.at_end()) << "only one answer";
  }
}

TEST(Framing, AcceptsWhatIsClear) {
  const std::vector<std::string> requests = {
      "GET /echo HTTP/1.0\r\n\r\n",
      "GET /echo HTTP/1.0\r\nHost: a\r\n\r\n",
      "GET /echo HTTP/1.1\r\nHost:\r\n\r\n",
      "GET /echo HTTP/1.1\r\nhOST: [::1]:8080\r\n\r\n",
      "GET http://other:1/echo HTTP/1.1\r\nHost: a\r\n\r\n",
      "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 0\r\n\r\n",
      "POST /echo HTTP/1.1\r\nHost: a\r\nTransfer-Encoding:  CHUNKED \r\n\r\n0\r\n\r\n",
      "POST /echo HTTP/1.0\r\nExpect: anything\r\n\r\n",
  };
  TestServer test;
  for (const auto& request : requests) EXPECT_EQ(200, ask(test.port(), request).status) << request;
}

TEST(Framing, LetsATargetThatNamesItsHostCountMoreThanTheHeader) {
  TestServer test;
  const auto host_of = [&](const std::string& request) { return ask(test.port(), request).body; };
  EXPECT_EQ("a:1", host_of("GET /host HTTP/1.1\r\nHost: a:1\r\n\r\n"));
  EXPECT_EQ("b:2", host_of("GET http://b:2/host HTTP/1.1\r\nHost: a:1\r\n\r\n"));
  EXPECT_EQ("b", host_of("GET http://b/host HTTP/1.0\r\n\r\n"));
}

TEST(Framing, KnowsWhatAHostIs) {
  for (const char* host :
       {"", "a", "a%20b", "a.b-c_d", "a:", "a:80", "192.0.2.1:80", "[::1]", "[::1]:80", "[::ffff:1.2.3.4]"})
    EXPECT_TRUE(zelto::is_host(host)) << host;
  for (const char* host : {"a b", "a:b", "a:8:0", "a:-1", "[::1", "[]", "[::1]a", "[g]", "::1", "a]", "a\tb", "a@b",
                           "a/b", "a%zz", "a%2", "a%\x7F", "\xC3\xA4"})
    EXPECT_FALSE(zelto::is_host(host)) << host;
}

zelto::HttpRequest with(int minor_version, const std::string& name, const std::string& value) {
  zelto::HttpRequest request;
  request.minor_version = minor_version;
  request.headers.push_back({name, value});
  return request;
}

TEST(Framing, KnowsWhetherTheConnectionStays) {
  EXPECT_TRUE(zelto::wants_keep_alive(with(1, "X", "close")));
  EXPECT_FALSE(zelto::wants_keep_alive(with(1, "connection", "keep-alive, CLOSE")));
  EXPECT_FALSE(zelto::wants_keep_alive(with(0, "X", "y")));
  EXPECT_TRUE(zelto::wants_keep_alive(with(0, "Connection", "Keep-Alive")));
  EXPECT_TRUE(zelto::expects_continue(with(1, "Expect", "100-Continue")));
  EXPECT_FALSE(zelto::expects_continue(with(0, "Expect", "100-continue")));
}

}  // namespace
}  // namespace zelto_test
