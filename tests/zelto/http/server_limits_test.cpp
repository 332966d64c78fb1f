#include <gtest/gtest.h>

#include <chrono>

#include "client.h"
#include "http/server.h"
#include "test_server.h"

namespace zelto_test {
namespace {

using std::chrono::milliseconds;

const std::string kHost = "Host: test\r\n";

zelto::ServerOptions with_limits(zelto::HttpLimits limits) {
  zelto::ServerOptions options;
  options.limits = limits;
  return options;
}

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
      {"trailer without end", chunked + "0\r\nX: " + std::string(70'000, 'x'), 400},
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
    EXPECT_EQ(answer->status, row.status);
    EXPECT_EQ(answer->header("Connection"), "close");
    EXPECT_TRUE(client.at_end());
  }
}

TEST(ServerLimits, AllowWhatJustFits) {
  std::string lines;
  for (int i = 0; i < 99; ++i) lines += "X: y\r\n";
  TestServer test;
  EXPECT_EQ(ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + lines + "\r\n").status, 200);
  const std::string head = "GET /echo HTTP/1.1\r\n" + kHost + "X: \r\n\r\n";
  const std::string padding(16'384 - head.size(), 'a');
  EXPECT_EQ(ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "X: " + padding + "\r\n\r\n").status, 200);
  EXPECT_EQ(ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "X: a" + padding + "\r\n\r\n").status, 431);
  EXPECT_EQ(ask(test.port(), "POST /echo HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n\r\n1;" +
                                 std::string(4000, 'x') + "\r\na\r\n0\r\n\r\n")
                .body,
            "POST /echo?|a");
}

TEST(ServerLimits, HandABodyThatIsTooLargeToThePageWithoutIt) {
  zelto::HttpLimits limits;
  limits.body_bytes = 1000;
  TestServer test(with_limits(limits));
  const std::string head = "POST /echo HTTP/1.1\r\n" + kHost;
  EXPECT_EQ(ask(test.port(), head + "Content-Length: 1000\r\n\r\n" + std::string(1000, 'a')).body,
            "POST /echo?|" + std::string(1000, 'a'));

  // The client sends it all before it reads: the answer must survive that.
  const std::string body(3'000'000, 'a');
  Client counted(test.port());
  ASSERT_TRUE(counted.send(head + "Content-Length: 3000000\r\n\r\n" + body));
  EXPECT_EQ(counted.receive().value().body, "POST /echo?|too large 3000000");
  EXPECT_TRUE(counted.at_end());

  Client chunked(test.port());
  ASSERT_TRUE(
      chunked.send(head + "Transfer-Encoding: chunked\r\n\r\n1f4\r\n" + std::string(500, 'a') + "\r\n1f5\r\n" + body));
  EXPECT_EQ(chunked.receive().value().body, "POST /echo?|too large 1001");

  Client huge_chunk(test.port());
  huge_chunk.send(head + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n");
  EXPECT_EQ(huge_chunk.receive().value().body, "POST /echo?|too large 1001");

  Client waiting(test.port());
  waiting.send(head + "Content-Length: 1001\r\nExpect: 100-continue\r\n\r\n");
  const Answer answer = waiting.receive().value();
  EXPECT_EQ(answer.status, 200) << "the page's own, with no 100 before it";
  EXPECT_EQ(answer.header("Connection"), "close");
}

TEST(ServerLimits, EndSlowRequestsWith408) {
  zelto::HttpLimits limits;
  limits.header_timeout = milliseconds(20);
  limits.body_timeout = milliseconds(20);
  TestServer test(with_limits(limits));
  for (const std::string start : {"GET /ec", "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 9\r\n\r\nab"}) {
    Client client(test.port());
    client.send(start);
    EXPECT_EQ(client.receive().value().status, 408) << start;
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
  EXPECT_EQ(client.receive().value().status, 408);
}

TEST(ServerLimits, AreTheseUnlessSaidOtherwise) {
  using namespace std::chrono_literals;
  const zelto::HttpLimits limits;
  EXPECT_EQ(limits.header_bytes, 16'384U);
  EXPECT_EQ(limits.header_lines, 100U);
  EXPECT_EQ(limits.chunk_extension_bytes, 4'096U);
  EXPECT_EQ(limits.body_bytes, 16'777'216U);
  EXPECT_EQ(limits.header_timeout, 10s);
  EXPECT_EQ(limits.body_timeout, 30s);
  EXPECT_EQ(limits.send_timeout, 30s);
  EXPECT_EQ(limits.keep_alive_timeout, 15s);
  EXPECT_EQ(limits.keep_alive_requests, 1000U);
  EXPECT_EQ(limits.drain_timeout, 5s);
  EXPECT_EQ(limits.drain_bytes, 1'073'741'824U);
  EXPECT_EQ(limits.body_rate, 256U);
  EXPECT_EQ(limits.connections, 4096U);
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
  EXPECT_EQ(kept.receive().value().status, 200);
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
    EXPECT_EQ(client.receive(), std::nullopt) << path;
  }
}

TEST(ServerLimits, EndTheDrainOfAClientThatNeverStops) {
  zelto::HttpLimits limits;
  limits.body_bytes = 10;
  limits.drain_bytes = 5'000'000;
  TestServer test(with_limits(limits));
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 99999999999\r\n\r\n");
  EXPECT_EQ(client.receive().value().body, "POST /echo?|too large 99999999999");
  const std::string block(100'000, 'a');
  while (client.send(block)) continue;  // ends when the server has closed
}

TEST(ServerLimits, EndTheDrainOfAClientThatNeitherSendsNorCloses) {
  zelto::HttpLimits limits;
  limits.body_bytes = 10;
  limits.drain_timeout = milliseconds(20);
  TestServer test(with_limits(limits));
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 11\r\n\r\n");
  EXPECT_EQ(client.receive().value().body, "POST /echo?|too large 11");
  EXPECT_TRUE(test.server->stop(std::chrono::minutes(1)));  // waits for connections that are left
}

TEST(ServerLimits, EndAConnectionAfterItsLastRequest) {
  zelto::HttpLimits limits;
  limits.keep_alive_requests = 2;
  TestServer test(with_limits(limits));
  Client client(test.port());
  const std::string request = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  client.send(request + request + request);
  EXPECT_EQ(client.receive().value().header("Connection"), "keep-alive");
  EXPECT_EQ(client.receive().value().header("Connection"), "close");
  EXPECT_TRUE(client.at_end());
}

TEST(ServerLimits, AnswerBusyWhenTheQueueIsFull) {
  zelto::ServerOptions options;
  options.workers = 1;
  options.queue = 1;
  TestServer test(options);
  Client running(test.port());
  running.send("GET /gate HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  // Both come one after the other on one connection each; one of them waits, the other cannot.
  Client first(test.port());
  Client second(test.port());
  const std::string request = "GET /gate HTTP/1.1\r\n" + kHost + "\r\n";
  first.send(request);
  second.send(request);
  EXPECT_EQ(test.wait_for_records(1)[0].status, 503);
  test.gate.open();
  const Answer a = first.receive().value();
  const Answer b = second.receive().value();
  EXPECT_EQ(a.status + b.status, 200 + 503);
  EXPECT_EQ((a.status == 503 ? a : b).header("Retry-After"), "1");
  EXPECT_EQ(running.receive().value().status, 200);
}

TEST(ServerLimits, AnswerBusyToTooManyConnections) {
  zelto::HttpLimits limits;
  limits.connections = 1;
  TestServer test(with_limits(limits));
  const std::string request = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  Client first(test.port());
  first.send(request);
  EXPECT_EQ(first.receive().value().status, 200);
  Client second(test.port());
  EXPECT_EQ(second.receive().value().status, 503);
  EXPECT_TRUE(second.at_end());
  first.send(request);
  EXPECT_EQ(first.receive().value().status, 200);
}

}  // namespace
}  // namespace zelto_test
