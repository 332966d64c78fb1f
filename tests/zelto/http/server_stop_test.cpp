#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "http/server.h"
#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

constexpr std::chrono::milliseconds kLong = std::chrono::minutes(1);
const std::string kEcho = "GET /echo HTTP/1.1\r\nHost: test\r\n\r\n";
const std::string kGate = "GET /gate HTTP/1.1\r\nHost: test\r\n\r\n";

TEST(ServerStop, FinishesWhatRunsAndClosesWhatIsIdle) {
  TestServer test;
  Client idle(test.port());
  idle.send(kEcho);
  EXPECT_EQ(200, idle.receive().value().status);
  Client untouched(test.port());
  Client running(test.port());
  running.send(kGate);
  test.gate.wait_for(1);
  std::thread stopper([&] { EXPECT_TRUE(test.server->stop(kLong)); });
  EXPECT_TRUE(idle.at_end());
  EXPECT_TRUE(untouched.at_end());
  EXPECT_THROW(Client(test.port()), std::runtime_error);
  test.gate.open();
  const Answer answer = running.receive().value();
  EXPECT_EQ(200, answer.status);
  EXPECT_EQ("close", answer.header("Connection"));
  EXPECT_TRUE(running.at_end());
  running.finish_sending();
  stopper.join();
}

// Its loop is busy when the request comes, and is told to stop before it has looked.
TEST(ServerStop, AnswersWhatHasComeByThen) {
  zelto::ServerOptions options;
  options.io_threads = 2;
  TestServer test(options);
  std::vector<std::unique_ptr<Client>> clients;  // of the two loops in turn
  for (int i = 0; i < 4; ++i) {
    clients.push_back(std::make_unique<Client>(test.port()));
    clients.back()->send(kEcho);
    EXPECT_EQ(200, clients.back()->receive().value().status);
  }
  Client& late = *clients[1];
  Client& stuck = *clients[3];
  stuck.send("GET /stuck HTTP/1.1\r\nHost: test\r\n\r\n");
  test.gate.wait_for(1);
  late.send(kEcho);
  std::thread stopper([&] { EXPECT_TRUE(test.server->stop(kLong)); });
  EXPECT_TRUE(clients[0]->at_end());
  test.gate.open();
  const std::optional<Answer> answer = late.receive();
  EXPECT_TRUE(answer && answer->status == 200 && answer->header("Connection") == "close");
  EXPECT_TRUE(late.at_end());
  clients.clear();
  stopper.join();
}

TEST(ServerStop, GivesUpWhatIsNotAnsweredInTime) {
  TestServer test;
  Client running(test.port());
  running.send(kGate);
  test.gate.wait_for(1);
  std::thread stopper([&] { EXPECT_FALSE(test.server->stop(std::chrono::milliseconds(1))); });
  EXPECT_EQ(std::nullopt, running.receive());
  test.gate.open();  // the worker is joined, not abandoned
  stopper.join();
}

// The connection's end is that of the body: in good order, it would say that the body is whole.
TEST(ServerStop, ResetsWhatALackOfTimeCutsShort) {
  TestServer test;
  Client waiting(test.port());
  waiting.send("GET /half HTTP/1.0\r\n\r\n");
  test.gate.wait_for(1);
  std::thread stopper([&] { EXPECT_FALSE(test.server->stop(std::chrono::milliseconds(1))); });
  EXPECT_EQ(std::nullopt, waiting.receive());
  EXPECT_TRUE(waiting.was_reset());
  test.gate.open();
  stopper.join();
}

// Of these some are complete, some wait for their client in a worker and some without one.
TEST(ServerStop, LetsNoShortenedBodyLookWhole) {
  constexpr std::size_t kClients = 48;
  constexpr std::size_t kStep = 125'000;
  TestServer test({.workers = kClients});
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t i = 0; i < kClients; ++i) {
    Client& client = *clients.emplace_back(std::make_unique<Client>(test.port()));
    client.send("GET /stream?" + std::to_string((i + 1) * kStep) + " HTTP/1.0\r\n\r\n");
    EXPECT_EQ(200, client.receive(true).value().status);
  }
  EXPECT_FALSE(test.server->stop(std::chrono::milliseconds(50)));
  std::size_t whole = 0;
  for (std::size_t i = 0; i < kClients; ++i) {
    const std::size_t received = clients[i]->read_to_end().size();
    whole += received == (i + 1) * kStep;
    EXPECT_EQ(received < (i + 1) * kStep, clients[i]->was_reset()) << i;
  }
  EXPECT_LT(whole, kClients);
}

TEST(ServerStop, FreesAWorkerThatWaitsForItsClient) {
  TestServer test;
  Client slow(test.port());
  slow.keep_receive_buffer_small();
  slow.send("GET /stream?50000000 HTTP/1.1\r\nHost: test\r\n\r\n");
  Client other(test.port());
  other.send(kEcho);
  EXPECT_EQ(200, other.receive().value().status);
  EXPECT_FALSE(test.server->stop(std::chrono::milliseconds(20)));
}

TEST(ServerStop, IsDoneOnce) {
  TestServer test;
  EXPECT_TRUE(test.server->stop(kLong));
  EXPECT_TRUE(test.server->stop(kLong));
}

TEST(ServerStop, NeedsNoStart) {
  zelto::Server server({}, [] { return std::unique_ptr<zelto::Worker>(); });
  EXPECT_TRUE(server.stop(kLong));
}

}  // namespace
}  // namespace zelto_test
