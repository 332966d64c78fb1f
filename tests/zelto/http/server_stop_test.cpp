#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "client.h"
#include "http/server.h"
#include "test_server.h"

namespace zelto_test {
namespace {

constexpr std::chrono::milliseconds kLong = std::chrono::minutes(1);
const std::string kEcho = "GET /echo HTTP/1.1\r\nHost: test\r\n\r\n";
const std::string kGate = "GET /gate HTTP/1.1\r\nHost: test\r\n\r\n";

TEST(ServerStop, FinishesWhatRunsAndClosesWhatIsIdle) {
  TestServer test;
  Client idle(test.port());
  idle.send(kEcho);
  EXPECT_EQ(idle.receive().value().status, 200);
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
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.header("Connection"), "close");
  EXPECT_TRUE(running.at_end());
  running.finish_sending();
  stopper.join();
}

TEST(ServerStop, GivesUpWhatIsNotAnsweredInTime) {
  TestServer test;
  Client running(test.port());
  running.send(kGate);
  test.gate.wait_for(1);
  std::thread stopper([&] { EXPECT_FALSE(test.server->stop(std::chrono::milliseconds(1))); });
  EXPECT_EQ(running.receive(), std::nullopt);
  test.gate.open();  // the worker is joined, not abandoned
  stopper.join();
}

TEST(ServerStop, FreesAWorkerThatWaitsForItsClient) {
  TestServer test;
  Client slow(test.port());
  slow.keep_receive_buffer_small();
  slow.send("GET /stream?50000000 HTTP/1.1\r\nHost: test\r\n\r\n");
  Client other(test.port());
  other.send(kEcho);
  EXPECT_EQ(other.receive().value().status, 200);
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
