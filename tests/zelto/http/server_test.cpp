#include "http/server.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

std::string get(const std::string& target) { return "GET " + target + " HTTP/1.1\r\n" + kHost + "\r\n"; }

TEST(Server, AnswersARequest) {
  TestServer test;
  const Answer answer = ask(test.port(), get("/echo/a%20b?c=%41"));
  EXPECT_EQ(200, answer.status);
  EXPECT_EQ("GET /echo/a b?c=%41|", answer.body);
  EXPECT_EQ("Zelto", answer.header("Server"));
  EXPECT_EQ("nosniff", answer.header("X-Content-Type-Options"));
  EXPECT_EQ("keep-alive", answer.header("Connection"));
  EXPECT_FALSE(answer.header("Date").empty());
}

TEST(Server, UnderstandsARequestThatComesByteByByte) {
  TestServer test;
  Client client(test.port());
  for (const char c :
       "POST /echo HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2;x=y\r\nde\r\n0\r\n\r\n")
    ASSERT_TRUE(client.send({&c, 1}));
  EXPECT_EQ("POST /echo?|abcde", client.receive().value().body);
}

TEST(Server, AnswersPipelinedRequestsInTheirOrder) {
  TestServer test({.workers = 4});
  std::string requests;
  for (int i = 0; i < 200; ++i) requests += get("/echo?" + std::to_string(i));
  Client client(test.port());
  client.send(requests);
  for (int i = 0; i < 200; ++i) EXPECT_EQ("GET /echo?" + std::to_string(i) + "|", client.receive().value().body);
}

TEST(Server, AnswersWhatComesWhileItAnswersTheLast) {
  TestServer test;
  Client client(test.port());
  client.send(get("/gate"));
  test.gate.wait_for(1);
  client.send(get("/echo?next"));
  test.gate.open();
  EXPECT_EQ(200, client.receive().value().status);
  EXPECT_EQ("GET /echo?next|", client.receive().value().body);
}

TEST(Server, SkipsALineBreakTooManyBetweenRequests) {
  TestServer test;
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 3\r\n\r\nabc\r\n" + get("/echo"));
  EXPECT_EQ("POST /echo?|abc", client.receive().value().body);
  EXPECT_EQ("GET /echo?|", client.receive().value().body);
  for (int i = 0; i < 20'000; ++i) client.send("\r\n");
  client.send(get("/echo"));
  EXPECT_EQ("GET /echo?|", client.receive().value().body);
}

TEST(Server, DropsTrailers) {
  TestServer test;
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost +
              "Transfer-Encoding: Chunked\r\n\r\n1\r\na\r\n0\r\nHost: other\r\nX: y\r\n\r\n");
  client.send(get("/echo"));
  EXPECT_EQ("POST /echo?|a", client.receive().value().body);
  EXPECT_EQ("GET /echo?|", client.receive().value().body);
}

// Whoever forwards a request looks at its head only.
TEST(Server, BelievesNoTrailer) {
  TestServer trusting({.trusted_proxies = {"127.0.0.1"}});
  const std::string head = "POST /encrypted HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n";
  const std::string claim = "X-Forwarded-Proto: https\r\n";
  EXPECT_EQ("encrypted", ask(trusting.port(), head + claim + "\r\n0\r\n\r\n").body);
  EXPECT_EQ("plain", ask(trusting.port(), head + "\r\n0\r\n" + claim + "\r\n").body);
}

TEST(Server, AsksForTheBodyOfAClientThatWaits) {
  TestServer test;
  Client client(test.port());
  client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: 2\r\nExpect: 100-continue\r\n\r\n");
  EXPECT_EQ(100, client.receive().value().status);
  client.send("ok");
  EXPECT_EQ("POST /echo?|ok", client.receive().value().body);
}

TEST(Server, SendsNoBodyToHead) {
  TestServer test;
  Client client(test.port());
  for (const std::string target : {"/length?5", "/stream?5"}) {
    client.send("HEAD " + target + " HTTP/1.1\r\n" + kHost + "\r\n");
    const Answer answer = client.receive(true).value();
    EXPECT_EQ(200, answer.status);
    EXPECT_EQ(target == "/length?5" ? "5" : "", answer.header("Content-Length"));
  }
  client.send(get("/length?3"));
  EXPECT_EQ("xxx", client.receive().value().body);
}

TEST(Server, SendsNoBodyWithAStatusThatHasNone) {
  TestServer test;
  Client client(test.port());
  for (const std::string status : {"204", "205", "304"}) {
    client.send(get("/status?" + status));
    const Answer answer = client.receive().value();
    EXPECT_EQ(status, std::to_string(answer.status));
    EXPECT_EQ(status == "205" ? "0" : "", answer.header("Content-Length"));  // whose end is not told by itself
    EXPECT_FALSE(client.has_input());
  }
  client.send(get("/echo"));
  EXPECT_EQ("GET /echo?|", client.receive().value().body);
}

TEST(Server, FramesBodiesOfAnySize) {
  TestServer test;
  Client client(test.port());
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{65536}, std::size_t{3'000'001}}) {
    for (const std::string path : {"/length?", "/stream?"}) {
      client.send(get(path + std::to_string(size)));
      EXPECT_EQ(std::string(size, 'x'), client.receive().value().body) << path << size;
    }
  }
}

TEST(Server, AnswersOldClientsWithoutChunks) {
  TestServer test;
  Client closing(test.port());
  closing.send("GET /stream?30000 HTTP/1.0\r\n\r\n");
  const Answer streamed = closing.receive().value();
  EXPECT_EQ("", streamed.header("Transfer-Encoding"));
  EXPECT_EQ("close", streamed.header("Connection"));
  EXPECT_EQ(30000U, streamed.body.size());

  Client kept(test.port());
  kept.send("GET /echo HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
  EXPECT_EQ("keep-alive", kept.receive().value().header("Connection"));
  kept.send("GET /echo HTTP/1.0\r\n\r\n");
  EXPECT_EQ("close", kept.receive().value().header("Connection"));
  EXPECT_TRUE(kept.at_end());
}

TEST(Server, ClosesWhenTheClientAsksForIt) {
  TestServer test;
  Client client(test.port());
  client.send("GET /echo HTTP/1.1\r\n" + kHost + "Connection: x, Close\r\n\r\n");
  EXPECT_EQ("close", client.receive().value().header("Connection"));
  EXPECT_TRUE(client.at_end());
}

TEST(Server, StillAnswersAClientThatHasEndedItsSide) {
  TestServer test;
  Client client(test.port());
  client.send(get("/length?2000000"));
  client.finish_sending();
  EXPECT_EQ(2'000'000U, client.receive().value().body.size());
}

TEST(Server, AnswersForAWorkerThatFails) {
  TestServer test;
  Client client(test.port());
  for (const std::string path : {"/throw", "/silent"}) {
    client.send(get(path));
    EXPECT_EQ(500, client.receive().value().status) << path;
  }
  client.send(get("/short"));
  EXPECT_EQ(std::nullopt, client.receive()) << "an answer cut short must not look complete";
}

TEST(Server, ShowsThatAnAnswerIsBrokenOff) {
  TestServer test;
  for (const std::string size : {"5", "3000000"}) {
    SCOPED_TRACE(size);
    Client chunked(test.port());
    chunked.send(get("/broken?" + size) + get("/echo"));
    EXPECT_EQ(std::nullopt, chunked.receive());
    EXPECT_EQ(std::string(std::stoul(size), 'x'), chunked.broken_body()) << "what was written arrives";
    EXPECT_TRUE(chunked.at_end());
    Client old(test.port());
    old.send("GET /broken?" + size + " HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    EXPECT_EQ(std::nullopt, old.receive());
    EXPECT_TRUE(old.was_reset());
  }
  Client head(test.port());
  head.send("HEAD /broken?5 HTTP/1.0\r\n\r\n");
  EXPECT_EQ(200, head.receive(true).value().status);
  EXPECT_TRUE(head.at_end());
  EXPECT_FALSE(head.was_reset()) << "nothing of it is missing";
}

TEST(Server, TellsWhenTheClientHasGone) {
  TestServer test;
  {
    Client client(test.port());
    client.send(get("/gone"));
    test.gate.wait_for(1);
  }
  test.gate.open();
  test.wait_for_records(1);
  EXPECT_EQ((std::vector{true, false}), test.connected_before_and_after_gate);
}

TEST(Server, SurvivesClientsThatReset) {
  TestServer test;
  for (const std::string start : {"", "GET", "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 9\r\n\r\nab"}) {
    Client client(test.port());
    client.send(start);
    client.reset();
  }
  Client slow(test.port());
  slow.send(get("/stream?50000000"));
  ASSERT_TRUE(test.port() > 0);
  slow.reset();
  EXPECT_EQ(200, ask(test.port(), get("/echo")).status);
}

TEST(Server, WritesOneRecordPerAnswer) {
  TestServer test;
  Client client(test.port());
  client.send("GET /echo HTTP/1.1\r\n" + kHost + "Referer: http://from/\r\nUser-Agent: agent\r\n\r\n");
  client.receive();
  client.send("bad\r\n\r\n");
  client.receive();
  const auto records = test.wait_for_records(2);
  EXPECT_EQ("127.0.0.1", records[0].remote_address);
  EXPECT_EQ("GET /echo HTTP/1.1", records[0].request_line);
  EXPECT_EQ("http://from/", records[0].referer);
  EXPECT_EQ("agent", records[0].user_agent);
  EXPECT_EQ("noted", records[0].note);
  EXPECT_EQ(200, records[0].status);
  EXPECT_EQ(11U, records[0].body_bytes);
  EXPECT_EQ("bad", records[1].request_line);
  EXPECT_EQ(400, records[1].status);
}

TEST(Server, WritesTheRecordOfAClientThatSaysNoMore) {
  TestServer test;
  Client client(test.port());
  client.send(get("/echo"));
  client.receive();
  EXPECT_EQ("GET /echo HTTP/1.1", test.wait_for_records(1).front().request_line);
}

TEST(Server, BelievesOnlyATrustedProxyThatItsClientCameEncrypted) {
  struct Row {
    std::string headers;
    std::string answer;
  };
  const Row rows[] = {{"", "plain"},
                      {"X-Forwarded-Proto: https\r\n", "encrypted"},
                      {"x-forwarded-proto: HTTPS\r\n", "encrypted"},
                      {"X-Forwarded-Proto: http\r\n", "plain"},
                      {"X-Forwarded-Proto: https, http\r\n", "plain"},
                      {"X-Forwarded-Proto: https\r\nX-Forwarded-Proto: http\r\n", "plain"}};
  TestServer trusting({.trusted_proxies = {"10.0.0.1", "127.0.0.1"}});
  TestServer wary({.trusted_proxies = {"10.0.0.1"}});
  for (const Row& row : rows) {
    const std::string request = "GET /encrypted HTTP/1.1\r\n" + kHost + row.headers + "\r\n";
    EXPECT_EQ(row.answer, ask(trusting.port(), request).body) << row.headers;
    EXPECT_EQ("plain", ask(wary.port(), request).body) << row.headers;
  }
}

TEST(Server, AnswersManyClientsAtOnce) {
  TestServer test({.io_threads = 2, .workers = 4});
  constexpr int kClients = 16;
  constexpr int kRequests = 50;
  std::atomic<int> right = 0;
  std::vector<std::thread> clients;
  for (int c = 0; c < kClients; ++c) {
    clients.emplace_back([&test, &right, c] {
      Client client(test.port());
      for (int i = 0; i < kRequests; ++i) {
        const std::string body = std::to_string(c) + "/" + std::to_string(i);
        client.send("POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
                    body);
        const auto answer = client.receive();
        right += answer && answer->body == "POST /echo?|" + body ? 1 : 0;
      }
    });
  }
  for (auto& client : clients) client.join();
  EXPECT_EQ(kClients * kRequests, right);
}

TEST(Server, DoesNotStartOnAnAddressThatIsTaken) {
  TestServer test;
  zelto::ServerOptions options;
  options.port = test.port();
  zelto::Server second(options, [] { return std::unique_ptr<zelto::Worker>(); });
  EXPECT_THROW(second.start(), std::system_error);
  options.address = "not an address";
  zelto::Server third(options, [] { return std::unique_ptr<zelto::Worker>(); });
  EXPECT_THROW(third.start(), std::system_error);
}

TEST(Server, DoesNotStartWithoutItsWorkers) {
  zelto::Server server({}, []() -> std::unique_ptr<zelto::Worker> { throw std::runtime_error("no engine"); });
  EXPECT_THROW(server.start(), std::runtime_error);
}

TEST(Server, HasTheRouterAnswerBeforeABodyIsReadAndWithoutAWorker) {
  TestServer test({.workers = 1});
  Client holder(test.port());
  holder.send("GET /gate HTTP/1.1\r\nHost: a\r\n\r\n");
  test.gate.wait_for(1);
  Client client(test.port());
  client.send("GET /routed HTTP/1.1\r\nHost: a\r\n\r\nGET /routed HTTP/1.1\r\nHost: a\r\n\r\n");
  for (int i = 0; i < 2; ++i) EXPECT_EQ("routed", client.receive().value().body);
  client.send("POST /routed HTTP/1.1\r\nHost: a\r\nContent-Length: 1000\r\nExpect: 100-continue\r\n\r\n");
  const Answer answer = client.receive().value();
  EXPECT_EQ(200, answer.status) << "with no 100 before it";
  EXPECT_EQ("close", answer.header("Connection"));
  client.send("GET /routed HTTP/1.1\r\nHost: a\r\n\r\n");
  EXPECT_EQ(std::nullopt, client.receive()) << "this is the body now";
}

TEST(Server, AnswersARequestThatItsRouterFailsAt) {
  TestServer test;
  Client client(test.port());
  client.send("GET /unroutable HTTP/1.1\r\nHost: a\r\n\r\n");
  EXPECT_EQ(500, client.receive().value().status);
  client.send("GET /echo HTTP/1.1\r\nHost: a\r\n\r\n");
  EXPECT_EQ(200, client.receive().value().status);
  test.server->stop(std::chrono::minutes(1));
  EXPECT_EQ(std::vector<std::string>{"/unroutable: not to be routed"}, test.problems);
}

}  // namespace
}  // namespace zelto_test
