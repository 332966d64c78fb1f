#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "http/server.h"
#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

using std::chrono::milliseconds;

TEST(ServerLoad, AnswerBusyWhenTheQueueIsFull) {
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
  EXPECT_EQ(503, test.wait_for_records(1)[0].status);
  test.gate.open();
  const Answer a = first.receive().value();
  const Answer b = second.receive().value();
  EXPECT_EQ(200 + 503, a.status + b.status);
  EXPECT_EQ("1", (a.status == 503 ? a : b).header("Retry-After"));
  EXPECT_EQ(200, running.receive().value().status);
}

TEST(ServerLoad, AnswerBusyToTooManyConnections) {
  zelto::HttpLimits limits;
  limits.connections = 1;
  TestServer test(with_limits(limits));
  Client first(test.port());
  first.send("GET /gate HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  Client second(test.port());
  EXPECT_EQ(503, second.receive().value().status);
  EXPECT_TRUE(second.at_end());
  test.gate.open();
  EXPECT_EQ(200, first.receive().value().status);
}

// A client has its answer before the server knows that the connection waits again: that it does once it has logged the
// answer, on the one loop that admits connections as well.
TEST(ServerLoad, HaveAnIdleConnectionGiveWayToANewOne) {
  zelto::HttpLimits limits;
  limits.connections = 2;
  zelto::ServerOptions options = with_limits(limits);
  options.io_threads = 1;
  TestServer test(options);
  const std::string request = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  std::size_t answers = 0;
  const auto expect_answer = [&](Client& client) {
    client.send(request);
    EXPECT_EQ(200, client.receive().value().status);
    test.wait_for_records(++answers);
  };
  Client silent(test.port());
  silent.send("GET /ec");
  Client idle(test.port());
  expect_answer(idle);
  Client third(test.port());
  expect_answer(third);
  EXPECT_TRUE(silent.at_end()) << "longer than the other one";
  expect_answer(idle);
  Client fourth(test.port());
  expect_answer(fourth);
  EXPECT_TRUE(third.at_end()) << "the other one was answered later";
}

TEST(ServerLoad, GiveAnAddressItsShareOfConnections) {
  zelto::ServerOptions options;
  options.limits.connections_per_address = 1;
  options.limits.limits_loopback = true;
  TestServer test(options);
  Client first(test.port());
  first.send("GET /gate HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  Client second(test.port());
  EXPECT_EQ(503, second.receive().value().status);
  options.trusted_proxies = {"127.0.0.1"};
  test.server->change(options.limits, options.trusted_proxies);
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "\r\n").status);
}

// Through a proxy there, all clients come from one address.
TEST(ServerLoad, CountNoAddressOfTheMachineItself) {
  zelto::HttpLimits limits;
  limits.connections_per_address = 1;
  TestServer test(with_limits(limits));
  Client first(test.port());
  first.send("GET /gate HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "\r\n").status);
}

// All of them together hold no worker.
TEST(ServerLoad, AnswerOthersWhileSlowClientsTakeTheirTime) {
  zelto::ServerOptions options;
  options.workers = 1;
  options.spool.memory_bytes = 2'000'000;
  TestServer test(options);
  std::vector<std::unique_ptr<Client>> slow;
  for (const std::string path : {"/stream?", "/length?", "/stream?", "/length?"}) {
    slow.push_back(std::make_unique<Client>(test.port()));
    slow.back()->send("GET " + path + "20000000 HTTP/1.1\r\n" + kHost + "\r\n");
  }
  const std::string request = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  EXPECT_EQ(200, ask(test.port(), request).status);
  // And they get what they asked for.
  for (const auto& client : slow) EXPECT_EQ(20'000'000u, client->receive().value().body.size());
}

// The second connection's loop is stuck; the first one's answers on, but the server as a whole is not well.
TEST(ServerLoad, BeatsOnlyWhileEveryLoopRuns) {
  std::atomic<unsigned> beats = 0;
  zelto::ServerOptions options;
  options.io_threads = 2;
  options.beat = milliseconds(1);
  options.on_beat = [&beats] {
    ++beats;
    beats.notify_all();
  };
  TestServer test(options);
  const auto wait_for_more_than = [&beats](unsigned seen) {
    for (unsigned now = beats; now <= seen; now = beats) beats.wait(now);
  };
  wait_for_more_than(2);
  const std::string echo = "GET /echo HTTP/1.1\r\n" + kHost + "\r\n";
  Client first(test.port());
  first.send(echo);
  EXPECT_EQ(200, first.receive().value().status);
  Client second(test.port());
  second.send("GET /stuck HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  const unsigned before = beats;
  for (int i = 0; i < 200; ++i) {
    first.send(echo);
    EXPECT_EQ(200, first.receive().value().status);
  }
  EXPECT_LE(beats, before + 1) << "one may have been on its way";
  test.gate.open();
  EXPECT_EQ(200, second.receive().value().status);
  wait_for_more_than(before + 1);
}

// Its worker goes on at once with a page that is mostly over soon, and now is not.
TEST(ServerLoad, SendAnAnswerWhateverItsWorkerDoesNext) {
  zelto::ServerOptions options;
  options.workers = options.io_threads = 1;
  TestServer test(options);
  const std::string known = "GET /kind?known HTTP/1.1\r\n" + kHost + "\r\n";
  for (int i = 0; i < 40; ++i) EXPECT_EQ(200, ask(test.port(), known).status);
  Client holder(test.port());
  Client first(test.port());
  Client second(test.port());
  Client router(test.port());
  holder.send("GET /gate HTTP/1.1\r\n" + kHost + "\r\n");
  test.gate.wait_for(1);
  first.send(known);
  second.send("GET /kind?known&wait HTTP/1.1\r\n" + kHost + "\r\n");
  router.send("GET /routed HTTP/1.1\r\n" + kHost + "\r\n");
  EXPECT_EQ(200, router.receive().value().status) << "by now the loop has read the others' requests";
  test.gate.open();
  EXPECT_EQ(200, holder.receive().value().status);
  test.other_gate.wait_for(1);
  EXPECT_EQ("GET /kind?known|", first.receive().value().body);
  test.other_gate.open();
  EXPECT_EQ(200, second.receive().value().status);
}

TEST(ServerLoad, AnswerManyAtOnceEachWithItsOwn) {
  zelto::ServerOptions options;
  options.workers = options.io_threads = 1;
  TestServer test(options);
  constexpr std::size_t kClients = 30;
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t i = 0; i < kClients; ++i) clients.push_back(std::make_unique<Client>(test.port()));
  for (std::size_t round = 0; round < 30; ++round) {
    for (std::size_t i = 0; i < kClients; ++i) {
      clients[i]->send("GET /kind?known&" + std::to_string(round * 100 + i) + " HTTP/1.1\r\n" + kHost + "\r\n");
    }
    for (std::size_t i = 0; i < kClients; ++i) {
      ASSERT_EQ("GET /kind?known&" + std::to_string(round * 100 + i) + "|", clients[i]->receive().value().body);
    }
  }
  EXPECT_EQ(900u, test.wait_for_records(900).size());
}

// More than the connection may keep of an answer, where nothing may wait for room.
TEST(ServerLoad, KeepWhatTheRouterAnswersWhenThereIsNoRoom) {
  zelto::ServerOptions options;
  options.io_threads = 1;
  options.spool.memory_bytes = options.spool.file_bytes = 0;
  TestServer test(options);
  Client slow(test.port());
  constexpr int kRequests = 1000;
  std::jthread sender([&] {
    const std::string request = "GET /routed?" + std::string(8000, 'q') + " HTTP/1.1\r\n" + kHost + "\r\n";
    for (int i = 0; i < kRequests && slow.send(request); ++i) continue;
  });
  EXPECT_EQ(24'006u, slow.receive().value().body.size());
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "\r\n").status);
  for (int i = 1; i < kRequests; ++i) ASSERT_EQ(24'006u, slow.receive().value().body.size()) << i;
}

TEST(ServerLoad, HaveRequestsOfOneTurnHoldOneWorker) {
  zelto::ServerOptions options;
  options.workers = 2;
  options.turn_queue = 2;
  options.limits.turn_timeout = milliseconds(50);
  TestServer test(options);
  const std::string request = "GET /turn?a HTTP/1.1\r\n" + kHost + "\r\n";
  Client holder(test.port());
  holder.send(request);
  test.gate.wait_for(1);
  std::vector<std::unique_ptr<Client>> others;
  for (int i = 0; i < 3; ++i) {
    others.push_back(std::make_unique<Client>(test.port()));
    others.back()->send(request);
  }
  EXPECT_EQ(200, ask(test.port(), "GET /echo HTTP/1.1\r\n" + kHost + "\r\n").status);
  // One is too many, and two wait for longer than they may.
  for (const auto& other : others) {
    const Answer answer = other->receive().value();
    EXPECT_EQ(503, answer.status);
    EXPECT_EQ("1", answer.header("Retry-After"));
  }
  test.gate.open();
  EXPECT_EQ(200, holder.receive().value().status);
  others[0]->send(request);
  EXPECT_EQ(200, others[0]->receive().value().status) << "on the same connection, once it is its turn";
}

TEST(ServerLoad, RefuseABodyForWhichThereIsNoRoom) {
  zelto::ServerOptions options;
  options.spool.memory_bytes = 0;
  options.spool.file_bytes = 100'000;
  TestServer test(options);
  const std::string head = "POST /echo HTTP/1.1\r\n" + kHost + "Content-Length: ";
  const std::string body(90'000, 'a');
  EXPECT_EQ("POST /echo?|" + body, ask(test.port(), head + "90000\r\n\r\n" + body).body) << "from its file";
  EXPECT_EQ(503, ask(test.port(), head + "110000\r\n\r\n" + body + std::string(20'000, 'a')).status);
  test.server->stop(std::chrono::minutes(1));
  ASSERT_EQ(1u, test.problems.size());
  EXPECT_EQ(
      "a request's body is refused: keeping a request's body: no room is left of spool_limit: Disk quota exceeded",
      test.problems[0]);
}

}  // namespace
}  // namespace zelto_test
