// What a connection knows of its client while a worker answers.
#include "http/client_watch.h"

#include <gtest/gtest.h>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <functional>
#include <future>
#include <memory>
#include <utility>

namespace {

namespace asio = boost::asio;
using zelto::ClientWatch;
using zelto::IoLoop;
using zelto::Socket;

// A connection on a loop, and its client.
class ClientWatchTest : public testing::Test {
 protected:
  ClientWatchTest() {
    loop_.start([] {}, [](std::string_view) {}, [] {});
    asio::ip::tcp::acceptor acceptor(loop_.executor(), {asio::ip::address_v4::loopback(), 0});
    client_.connect(acceptor.local_endpoint());
    socket_ = std::make_unique<Socket>(acceptor.accept(loop_.executor()));
    watch_ = std::make_unique<ClientWatch>(*socket_, loop_.mailbox(), [this] { has_come_.set_value(); });
  }
  ~ClientWatchTest() override { loop_.stop(); }

  bool on_loop(const std::function<bool()>& function) {
    std::promise<bool> answer;
    auto ask = std::make_shared<std::function<void()>>([&] { answer.set_value(function()); });
    loop_.mailbox().send({std::move(ask), [](void* held) noexcept { (*static_cast<std::function<void()>*>(held))(); }});
    return answer.get_future().get();
  }

  IoLoop loop_;
  asio::io_context clients_;
  asio::ip::tcp::socket client_{clients_};
  std::unique_ptr<Socket> socket_;
  std::promise<void> has_come_;
  std::unique_ptr<ClientWatch> watch_;
};

TEST_F(ClientWatchTest, TellsWhenTheClientSendsItsNextRequest) {
  EXPECT_TRUE(on_loop([this] {
    watch_->begin(std::make_shared<int>(), false);
    return watch_->await();
  }));
  asio::write(client_, asio::buffer("G", 1));
  has_come_.get_future().wait();
}

// Nothing more may come then.
TEST_F(ClientWatchTest, WaitsForNothingWhenTheNextRequestIsThereAlready) {
  EXPECT_FALSE(on_loop([this] {
    watch_->begin(std::make_shared<int>(), true);
    return watch_->await();
  }));
}

}  // namespace
