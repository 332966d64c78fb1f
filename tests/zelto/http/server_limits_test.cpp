#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "http/server.h"
#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

using std::chrono::milliseconds;

// The whole request, its answer, and the closing of the connection.
struct Refused {
  const char* what;
  std::string request;
  int status;
};

TEST(ServerLimits, RefuseAndClose) {
  const std::string long_text(20'000, 'a');
  std::string many_lines;
  for (int i = 0; i < 100; ++i) many_lines += "X: y\r\n";
  const std::string chunked = "POST /echo HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n\r\n";
  const std::vector<Refused> rows = {
      {"header block", "GET /echo HTTP/1.1\r\n" + kHost + "X: " + long_text + "\r\n\r\n", 431},
      {"header block without end", "GET /echo HTTP/1.1\r\n" + kHost + "X: " + long_text, 431},
      {"header lines", "GET /echo HTTP/1.1\r\n" + kHost + many_lines + "\r\n", 431},
      {"target", "GET /" + long_text + " HTTP/1.1\r\n" + kHost + "\r\n", 414},
      {"chunk extension", chunked + "1;" + std::string(5000, 'x') + "\r\na\r\n0\r\n\r\n", 400},
      {"chunk line without end", chunked + "1;" + std::string(70'000, 'x'), 400},
      {"trailer without end", chunked + "0\r\nX: " + std::string(70'000, 'x'), 431},
      {"trailer without end, after a chunk", chunked + "1\r\na\r\n0;x\r\nX: " + std::string(5'000, 'x'), 431},
      {"trailer", chunked + "0\r\nX: " + std::string(5'000, 'x') + "\r\n\r\n", 431},
      {"folded trailer", chunked + "0\r\nX: a\r\n b\r\n\r\n", 400},
      {"folded trailer without end", chunked + "0\r\nX: a\r\n b", 400},
      {"chunk size", chunked + "g\r\n", 400},
      {"chunk end", chunked + "1\r\nabc\r\n", 400},
      {"expectation", "POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 1\r\nExpect: cake\r\n\r\n", 417},
      {"second expectation",
       "POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 1\r\nExpect: 100-continue\r\nExpect: cake\r\n\r\n", 417},
      {"version", "GET /echo HTTP/2.0\r\n" + kHost + "\r\n", 505},
  };
  TestServer test;
  for (const Refused& row : rows) {
    SCOPED_TRACE(row.what);
    Client client(test.port());
    client.send(row.request);
    const auto answer = client.receive();
    ASSERT_TRUE(answer);
    EXPECT_EQ(row.status, answer->status);
    EXPECT_EQ("close", answer->header("Connection"));
    EXPECT_TRUE(client.at_end());
  }
}

TEST(ServerLimits, AllowWhatJustFits) {
  std::string lines;
  for (int i = 0; i < 99; ++i) lines += "X: y\r\n";
  TestServer test;
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + lines + "\r\n").status);
  const std::string head = "GET /echo HTTP/1.1\r\n" + kHost + "X: \r\n\r\n";
  const std::string padding(16'384 - head.size(), 'a');
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "X: " + padding + "\r\n\r\n").status);
  EXPECT_EQ(431, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "X: a" + padding + "\r\n\r\n").status);
  EXPECT_EQ("POST /echo?|a",
            ask(test.port(), "POST /echo HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n\r\n1;" +
                                 std::string(4000, 'x') + "\r\na\r\n0\r\n\r\n")
                .body);
  EXPECT_EQ("POST /echo?|a", ask(test.port(), "POST /echo HTTP/1.1\r\n" + kHost +
                                                  "Transfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\nX: " +
                                                  std::string(4000, 'x') + "\r\nY: z\r\n\r\n")
                                 .body);
}

TEST(ServerLimits, HandABodyThatIsTooLargeToThePageWithoutIt) {
  zelto::HttpLimits limits;
  limits.body_bytes = 1000;
  TestServer test(with_limits(limits));
  const std::string head = "POST /echo HTTP/1.1\r\n" + kHost;
  EXPECT_EQ("POST /echo?|" + std::string(1000, 'a'),
            ask(test.port(), head + "Content-Length: 1000\r\n\r\n" + std::string(1000, 'a')).body);

  // The client sends it all before it reads: the answer must survive that.
  const std::string body(200'000, 'a');
  Client counted(test.port());
  ASSERT_TRUE(counted.send(head + "Content-Length: 200000\r\n\r\n" + body));
  EXPECT_EQ("POST /echo?|too large 200000", counted.receive().value().body);
  counted.finish_sending();
  EXPECT_TRUE(counted.at_end());

  Client chunked(test.port());
  ASSERT_TRUE(
      chunked.send(head + "Transfer-Encoding: chunked\r\n\r\n1f4\r\n" + std::string(500, 'a') + "\r\n1f5\r\n" + body));
  EXPECT_EQ("POST /echo?|too large 1001", chunked.receive().value().body);

  Client huge_chunk(test.port());
  huge_chunk.send(head + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n");
  EXPECT_EQ("POST /echo?|too large 1001", huge_chunk.receive().value().body);

  Client waiting(test.port());
  waiting.send(head + "Content-Length: 1001\r\nExpect: 100-continue\r\n\r\n");
  const Answer answer = waiting.receive().value();
  EXPECT_EQ(200, answer.status) << "the page's own, with no 100 before it";
  EXPECT_EQ("close", answer.header("Connection"));
}

TEST(ServerLimits, EndSlowRequestsWith408) {
  zelto::HttpLimits limits;
  limits.header_timeout = milliseconds(20);
  limits.body_timeout = milliseconds(20);
  TestServer test(with_limits(limits));
  for (const std::string start : {"GET /ec", "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 9\r\n\r\nab"}) {
    Client client(test.port());
    client.send(start);
    EXPECT_EQ(408, client.receive().value().status) << start;
    EXPECT_TRUE(client.at_end());
  }
}

// It is never silent, and would take hours.
TEST(ServerLimits, EndABodyThatTricklesIn) {
  zelto::HttpLimits limits;
  limits.body_timeout = milliseconds(50);
  limits.body_rate = std::uint64_t{1} << 40;
  TestServer test(with_limits(limits));
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 16000000\r\n\r\n");
  for (int i = 0; i < 15'000'000 && !client.has_input(); ++i) client.send("a");
  EXPECT_EQ(408, client.receive().value().status);
}

TEST(ServerLimits, AreTheseUnlessSaidOtherwise) {
  using namespace std::chrono_literals;
  const zelto::HttpLimits limits;
  EXPECT_EQ(16'384U, limits.header_bytes);
  EXPECT_EQ(100U, limits.header_lines);
  EXPECT_EQ(4'096U, limits.chunk_extension_bytes);
  EXPECT_EQ(4'096U, limits.trailer_bytes);
  EXPECT_EQ(16'777'216U, limits.body_bytes);
  EXPECT_EQ(10s, limits.header_timeout);
  EXPECT_EQ(30s, limits.body_timeout);
  EXPECT_EQ(30s, limits.send_timeout);
  EXPECT_EQ(15s, limits.keep_alive_timeout);
  EXPECT_EQ(1000U, limits.keep_alive_requests);
  EXPECT_EQ(5s, limits.drain_timeout);
  EXPECT_EQ(262'144U, limits.drain_bytes);
  EXPECT_EQ(268'435'456U, limits.drain_upload_bytes);
  EXPECT_EQ(256U, limits.body_rate);
  EXPECT_EQ(256U, limits.send_rate);
  EXPECT_EQ(1'048'576U, limits.send_memory);
  EXPECT_EQ(30s, limits.turn_timeout);
  EXPECT_EQ(4096U, limits.connections);
  EXPECT_EQ(2048U, limits.connections_per_address);
  const zelto::SpoolLimits spool;
  EXPECT_EQ(134'217'728U, spool.memory_bytes);
  EXPECT_EQ(4'294'967'296U, spool.file_bytes);
  EXPECT_EQ(8U, zelto::ServerOptions().turn_queue);
}

TEST(ServerLimits, CloseSilentConnectionsWithoutAWord) {
  zelto::HttpLimits limits;
  limits.header_timeout = milliseconds(20);
  limits.keep_alive_timeout = milliseconds(20);
  TestServer test(with_limits(limits));
  Client fresh(test.port());
  EXPECT_TRUE(fresh.at_end());
  Client kept(test.port());
  kept.send("GET /echo HTTP/1.1\r\n" + kHost + "\r\n");
  EXPECT_EQ(200, kept.receive().value().status);
  EXPECT_TRUE(kept.at_end());
}

TEST(ServerLimits, StopSendingToAClientThatDoesNotRead) {
  zelto::HttpLimits limits;
  limits.send_timeout = milliseconds(50);
  TestServer test(with_limits(limits));
  for (const std::string path : {"/stream?", "/length?"}) {
    Client client(test.port());
    client.keep_receive_buffer_small();
    client.send("GET " + path + "50000000 HTTP/1.1\r\n" + kHost + "\r\n");
    test.wait_for_records(path == "/stream?" ? 1 : 2);
    EXPECT_EQ(std::nullopt, client.receive()) << path;
  }
}

// It reads its answer, which is not lost for what it goes on to send.
TEST(ServerLimits, EndTheDrainOfAClientThatNeverStops) {
  zelto::HttpLimits limits;
  limits.body_bytes = 10;
  limits.drain_timeout = milliseconds(300);
  TestServer test(with_limits(limits));
  const std::string block(100'000, 'a');
  for (const std::string path : {"/echo", "/routed"}) {
    Client client(test.port());
    client.send("POST " + path + " HTTP/1.1\r\n" + kHost + "Content-Length: 99999999999\r\n\r\n");
    EXPECT_EQ(200, client.receive().value().status);
    std::size_t sent = 0;
    while (client.send(block)) sent += block.size();  // ends when the server has closed
    // The system's buffers, and no more than the limit of the server.
    if (path == "/routed") {
      EXPECT_GT(64'000'000u, sent);
    }
  }
}

// Overload is no reason to take in more.
TEST(ServerLimits, DrainNoMoreOfABodyThatNoPageCouldRefuse) {
  zelto::ServerOptions options;
  options.workers = 1;
  options.queue = 0;
  options.limits.body_bytes = 10;
  options.limits.drain_timeout = milliseconds(300);
  TestServer test(options);
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 99999999999\r\n\r\n");
  EXPECT_EQ(503, client.receive().value().status);
  const std::string block(100'000, 'a');
  std::size_t sent = 0;
  while (client.send(block)) sent += block.size();
  EXPECT_GT(64'000'000u, sent);
}

// A browser does, and then shows what the page says.
TEST(ServerLimits, TakeAllOfAnUploadThatAPageRefuses) {
  zelto::HttpLimits limits;
  limits.body_bytes = 10;
  limits.drain_timeout = std::chrono::minutes(1);
  TestServer test(with_limits(limits));
  Client client(test.port());
  std::string body;
  body.resize(30'000'000, 'a');
  ASSERT_TRUE(client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 30000000\r\n\r\n" + body));
  EXPECT_EQ("POST /echo?|too large 30000000", client.receive().value().body);
}

TEST(ServerLimits, EndTheDrainOfAClientThatNeitherSendsNorCloses) {
  zelto::HttpLimits limits;
  limits.body_bytes = 10;
  limits.drain_timeout = milliseconds(20);
  TestServer test(with_limits(limits));
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 11\r\n\r\n");
  EXPECT_EQ("POST /echo?|too large 11", client.receive().value().body);
  EXPECT_TRUE(test.server->stop(std::chrono::minutes(1)));  // waits for connections that are left
}

TEST(ServerLimits, EndAConnectionAfterItsLastRequest) {
  zelto::HttpLimits limits;
  limits.keep_alive_requests = 2;
  TestServer test(with_limits(limits));
  Client client(test.port());
  const std::string request = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  client.send(request + request + request);
  EXPECT_EQ("keep-alive", client.receive().value().header("Connection"));
  EXPECT_EQ("close", client.receive().value().header("Connection"));
  EXPECT_TRUE(client.at_end());
}

}  // namespace
}  // namespace zelto_test
