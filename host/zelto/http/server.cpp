#include "http/server.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "http/connection.h"
#include "http/worker_pool.h"

namespace zelto {

namespace asio = boost::asio;
using asio::ip::tcp;

class Server::Impl {
 public:
  Impl(ServerOptions options, WorkerFactory factory)
      : options_(std::move(options)),
        terms_(std::make_shared<ConnectionTerms>(ConnectionTerms{options_.limits, options_.trusted_proxies})),
        pool_(std::move(factory), options_.workers, options_.worker_stack, options_.queue),
        shared_{pool_, [this](const AccessRecord& record) { log(record); },
                [this](Connection* connection) { forget(connection); }} {}

  ~Impl() {
    try {
      stop(std::chrono::milliseconds(0));
    } catch (...) {
      std::terminate();  // threads that cannot be joined would still use what is destroyed here
    }
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void start() {
    listen();
    pool_.start();
    asio::post(io_, [this] { accept(); });
    for (unsigned i = 0; i < std::max(options_.io_threads, 1U); ++i) threads_.emplace_back([this] { run_io(); });
  }

  std::uint16_t port() const { return port_; }

  void change(const HttpLimits& limits, std::vector<std::string> trusted_proxies) {
    auto changed = std::make_shared<const ConnectionTerms>(ConnectionTerms{limits, std::move(trusted_proxies)});
    const std::lock_guard lock(lock_);
    terms_.swap(changed);
  }

  bool stop(std::chrono::milliseconds grace) {
    if (std::exchange(stopped_, true)) return all_answered_;
    shared_.stopping = true;
    asio::post(io_, [this] {
      boost::system::error_code ignored;
      acceptor_.close(ignored);
      retry_.cancel();
    });
    for (const auto& connection : connections()) connection->close_when_idle();
    {
      std::unique_lock lock(lock_);
      all_answered_ = threads_.empty() || none_left_.wait_for(lock, grace, [this] { return connections_.empty(); });
    }
    for (const auto& connection : connections()) connection->abort();
    pool_.stop();
    io_.stop();
    threads_.clear();
    return all_answered_;
  }

 private:
  void listen() {
    boost::system::error_code error;
    const auto address = asio::ip::make_address(options_.address, error);
    const tcp::endpoint endpoint(address, options_.port);
    if (!error) acceptor_.open(endpoint.protocol(), error);
    if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor_.bind(endpoint, error);
    if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    if (error) {
      const std::string host = address.is_v6() ? "[" + options_.address + "]" : options_.address;
      throw std::system_error(std::error_code(error), "listening on " + host + ":" + std::to_string(options_.port));
    }
    port_ = acceptor_.local_endpoint().port();
  }

  void run_io() {
    for (;;) {
      try {
        io_.run();
        return;
      } catch (const std::exception&) {
        // Out of memory in one connection's step: that connection goes with its handler, the others go on.
        continue;
      }
    }
  }

  void accept() {
    acceptor_.async_accept(asio::make_strand(io_), [this](const boost::system::error_code& error, tcp::socket socket) {
      if (shared_.stopping || error == asio::error::operation_aborted) return;
      if (!error) {
        adopt(std::move(socket));
        accept();
        return;
      }
      // Mostly no descriptor left: one becomes free when a connection ends.
      retry_.expires_after(std::chrono::milliseconds(100));
      retry_.async_wait([this](const boost::system::error_code& cancelled) {
        if (!cancelled && !shared_.stopping) accept();
      });
    });
  }

  std::shared_ptr<const ConnectionTerms> terms() {
    const std::lock_guard lock(lock_);
    return terms_;
  }

  void adopt(tcp::socket socket) {
    const auto connection = std::make_shared<Connection>(std::move(socket), terms(), shared_);
    bool busy = false;
    {
      const std::lock_guard lock(lock_);
      if (shared_.stopping) return;
      busy = connections_.size() >= options_.limits.connections;
      connections_.emplace(connection.get(), connection);
    }
    if (busy)
      connection->answer_busy();
    else
      connection->start();
  }

  std::vector<std::shared_ptr<Connection>> connections() {
    std::vector<std::shared_ptr<Connection>> alive;
    const std::lock_guard lock(lock_);
    for (const auto& [key, weak] : connections_)
      if (auto connection = weak.lock()) alive.push_back(std::move(connection));
    return alive;
  }

  void forget(Connection* connection) {
    const std::lock_guard lock(lock_);
    connections_.erase(connection);
    if (connections_.empty()) none_left_.notify_all();
  }

  void log(const AccessRecord& record) {
    if (!options_.on_access) return;
    const std::lock_guard lock(log_lock_);
    options_.on_access(record);
  }

  const ServerOptions options_;
  std::mutex log_lock_;
  std::mutex lock_;  // guards terms_ and connections_; never held while one of these is released
  std::shared_ptr<const ConnectionTerms> terms_;
  std::unordered_map<Connection*, std::weak_ptr<Connection>> connections_;
  std::condition_variable none_left_;
  WorkerPool pool_;
  ConnectionShared shared_;
  // Behind what its handlers use: destroying it destroys the connections that are left.
  asio::io_context io_;
  asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};
  tcp::acceptor acceptor_{io_};
  asio::steady_timer retry_{io_};
  std::vector<std::jthread> threads_;
  std::uint16_t port_ = 0;
  bool stopped_ = false;
  bool all_answered_ = true;
};

Server::Server(ServerOptions options, WorkerFactory factory)
    : impl_(std::make_unique<Impl>(std::move(options), std::move(factory))) {}

Server::~Server() = default;

void Server::start() { impl_->start(); }

std::uint16_t Server::port() const { return impl_->port(); }

void Server::change(const HttpLimits& limits, std::vector<std::string> trusted_proxies) {
  impl_->change(limits, std::move(trusted_proxies));
}

bool Server::stop(std::chrono::milliseconds grace) { return impl_->stop(grace); }

}  // namespace zelto
