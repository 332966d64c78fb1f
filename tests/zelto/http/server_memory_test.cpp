// Memory that runs out in the server: a connection ends or is answered, and the server goes on listening.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "support/failing_allocations.h"
#include "zelto/http/client.h"
#include "zelto/http/test_server.h"

namespace zelto_test {
namespace {

using test::each_allocation_failing;
using test::FailingAllocation;

const std::string kEnd = " HTTP/1.1\r\nHost: test\r\nConnection: close\r\n";

zelto::ServerOptions one_thread() {
  zelto::ServerOptions options;
  options.io_threads = options.workers = 1;
  // What is left to a deadline is seen soon enough.
  options.limits.header_timeout = options.limits.body_timeout = options.limits.send_timeout = std::chrono::seconds(5);
  return options;
}

// An answer as the server meant it, or none.
void expect_whole(const std::optional<Answer>& answer, const std::string& body, int n) {
  if (!answer) return;
  EXPECT_TRUE(answer->status == 200 || answer->status == 500 || answer->status == 503) << n << ": " << answer->status;
  if (answer->status == 200) {
    EXPECT_EQ(body, answer->body) << n;
  }
}

// Of each request on a connection of its own, from its being accepted to its end.
void fail_everywhere(const std::string& request, const std::string& body, int times) {
  TestServer test(one_thread());
  const std::string echo = "GET /echo" + kEnd + "\r\n";
  ask(test.port(), echo);
  const int failures = each_allocation_failing([&](int n) {
    bool failed = false;
    {
      const FailingAllocation failing(n, times, FailingAllocation::On::other_threads);
      Client client(test.port());
      client.send(request);
      expect_whole(client.receive(), body, n);
      failed = failing.has_failed();
    }
    EXPECT_EQ("GET /echo?|", ask(test.port(), echo).body) << n;
    return failed && !testing::Test::HasFailure();
  });
  EXPECT_GT(failures, 10);
  EXPECT_TRUE(test.server->stop(std::chrono::minutes(1))) << "no connection is left behind";
  for (const std::string& problem : test.problems) {
    EXPECT_NE(std::string::npos, problem.find("std::bad_alloc")) << problem;
  }
}

TEST(FailingServer, AcceptsTheNextConnection) {
  for (const int times : {1, 4}) fail_everywhere("GET /echo?a" + kEnd + "\r\n", "GET /echo?a|", times);
}

TEST(FailingServer, AnswersTheNextRequestBehindABody) {
  const std::string body(100'000, 'b');
  const std::string head = "POST /echo" + kEnd + "Content-Length: 100000\r\n";
  for (const int times : {1, 4}) {
    fail_everywhere(head + "\r\n" + body, "POST /echo?|" + body, times);
    fail_everywhere(head + "Expect: 100-continue\r\n\r\n" + body, "POST /echo?|" + body, times);
  }
}

TEST(FailingServer, SendsAllOfAnAnswerOrShowsThatItIsNotWhole) {
  for (const int times : {1, 4}) {
    fail_everywhere("GET /stream?300000" + kEnd + "\r\n", std::string(300'000, 'x'), times);
    fail_everywhere("GET /length?300000" + kEnd + "\r\n", std::string(300'000, 'x'), times);
    fail_everywhere("GET /routed?" + std::string(1000, 'q') + kEnd + "\r\n", "routed" + std::string(3000, 'q'), times);
  }
}

// Nothing at all can be had for a while, not even for telling so.
TEST(FailingServer, ListensAgainWhenThereIsMemoryAgain) {
  TestServer test(one_thread());
  const std::string echo = "GET /echo" + kEnd + "\r\n";
  for (int n = 0; n < 3; ++n) {
    auto client = std::make_unique<Client>(test.port());
    {
      const FailingAllocation failing(0, FailingAllocation::kAll, FailingAllocation::On::other_threads);
      Client(test.port()).send(echo);
      client->send(echo);
      const auto patience = std::chrono::steady_clock::now() + std::chrono::minutes(1);
      while (!failing.has_failed() && std::chrono::steady_clock::now() < patience) std::this_thread::yield();
      EXPECT_TRUE(failing.has_failed());
    }
    expect_whole(client->receive(), "GET /echo?|", n);
    EXPECT_EQ("GET /echo?|", ask(test.port(), echo).body);
  }
  EXPECT_TRUE(test.server->stop(std::chrono::minutes(1)));
}

}  // namespace
}  // namespace zelto_test
