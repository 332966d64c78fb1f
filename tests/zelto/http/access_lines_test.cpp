#include "http/access_lines.h"

#include <gtest/gtest.h>

#include <boost/asio/post.hpp>
#include <climits>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "http/server.h"
#include "http/status.h"
#include "zelto/http/client.h"

namespace {

using zelto::AccessLines;
using zelto::AccessRecord;

class AccessLinesTest : public testing::Test {
 protected:
  struct Call {
    std::string lines;
    std::size_t count;
  };

  static AccessRecord record(const std::string& request_line) {
    AccessRecord record;
    record.request_line = request_line;
    return record;
  }
  static std::string line(const std::string& request_line) {
    std::string made;
    append_combined_line(made, record(request_line));
    return made + '\n';
  }
  void answer(const std::string& request_line) {
    boost::asio::post(io, [this, request_line] { lines.add(record(request_line)); });
  }

  boost::asio::io_context io;
  std::vector<Call> calls;
  AccessLines lines{io.get_executor(), [this](std::string_view some, std::size_t count) {
                      calls.push_back({std::string(some), count});
                    }};
};

TEST_F(AccessLinesTest, HandsOnTogetherWhatWasAnsweredInSomeRounds) {
  answer("one");
  io.poll();
  EXPECT_TRUE(calls.empty());
  answer("two");
  io.run();
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ(line("one") + line("two"), calls[0].lines);
  EXPECT_EQ(2u, calls[0].count);
  io.restart();
  answer("three");
  io.run();
  ASSERT_EQ(2u, calls.size());
  EXPECT_EQ(line("three"), calls[1].lines);
}

TEST_F(AccessLinesTest, HandsOnWholeLinesThatAPipeTakesInOnePiece) {
  std::string all;
  for (int i = 0; i < 200; ++i) {
    const std::string request_line = i == 100 ? std::string(PIPE_BUF, 'x') : std::to_string(i);
    answer(request_line);
    all += line(request_line);
  }
  io.run();
  std::string handed_on;
  std::size_t count = 0;
  for (const Call& call : calls) {
    EXPECT_TRUE(call.lines.size() <= PIPE_BUF || call.count == 1);
    EXPECT_EQ('\n', call.lines.back());
    handed_on += call.lines;
    count += call.count;
  }
  EXPECT_EQ(all, handed_on);
  EXPECT_EQ(200u, count);
  EXPECT_GT(20u, calls.size());
}

TEST_F(AccessLinesTest, HandsOnAtTheEndWhatWaits) {
  lines.add(record("one"));
  EXPECT_TRUE(calls.empty());
  lines.flush();
  lines.flush();
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ(1u, calls[0].count);
}

class Greeter final : public zelto::Worker {
 public:
  void handle(zelto::HttpRequest&& /*request*/, zelto::ResponseSink& sink) override { zelto::serve_status(sink, 200); }
};

TEST(AccessLog, HasTheLineOfAConnectionThatHasEnded) {
  std::mutex lock;
  std::size_t count = 0;
  zelto::ServerOptions options;
  options.on_access_lines = [&](std::string_view /*lines*/, std::size_t more) {
    const std::lock_guard guard(lock);
    count += more;
  };
  zelto::Server server(options, [] { return std::make_unique<Greeter>(); });
  server.start();
  for (std::size_t asked = 1; asked <= 200; ++asked) {
    zelto_test::Client client(server.port());
    client.send("GET / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n");
    client.read_to_end();
    const std::lock_guard guard(lock);
    ASSERT_EQ(asked, count);
  }
}

TEST(IoLoop, TellsOfItsEndWhenNoHandlerRunsAnyMore) {
  std::vector<int> order;
  std::promise<void> has_run;
  zelto::IoLoop loop;
  boost::asio::post(loop.executor(), [&] {
    order.push_back(1);
    has_run.set_value();
  });
  loop.start([] {}, [](std::string_view) {}, [&] { order.push_back(2); });
  has_run.get_future().wait();
  loop.stop();
  EXPECT_EQ((std::vector{1, 2}), order);
}

}  // namespace
