#include "http/server.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/basic_socket_acceptor.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <deque>
#include <exception>
#include <future>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "http/access_lines.h"
#include "http/client_address.h"
#include "http/connection.h"
#include "http/deadline.h"
#include "http/io_loop.h"
#include "http/listening_socket.h"
#include "http/peer.h"
#include "http/worker_pool.h"

namespace zelto {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

// After which what failed for want of memory or files is tried again.
constexpr std::chrono::milliseconds kPause(20);
// What connections need to close once they have been told to; nothing waits for a client then.
constexpr std::chrono::seconds kLastSteps(5);

// Goes with a handler, called or not: one that no memory could be had for is dropped.
struct Reset {
  void operator()(std::atomic<bool>* is_waiting) const { *is_waiting = false; }
};
using Waiting = std::unique_ptr<std::atomic<bool>, Reset>;

}  // namespace

class Server::Impl {
 public:
  Impl(ServerOptions options, WorkerFactory factory, Router* router)
      : options_(std::move(options)),
        terms_(std::make_shared<ConnectionTerms>(ConnectionTerms{options_.limits, options_.trusted_proxies})),
        table_({options_.limits.connections, options_.limits.connections_per_address}),
        spool_(options_.spool, [this](std::string_view problem) { report(problem); }),
        pool_(std::move(factory), {options_.workers, options_.worker_stack, options_.queue, options_.turn_queue}),
        shared_{pool_,
                table_,
                spool_,
                router,
                [this](const AccessRecord& record, const IoLoop::Executor& loop, bool at_once) {
                  log(record, loop, at_once);
                },
                [this](std::string_view problem) { report(problem); }},
        loops_(options_.io_threads ? options_.io_threads : std::max(std::thread::hardware_concurrency() / 2, 1U)),
        acceptor_(loops_.front().executor()),
        retry_(loops_.front().executor()),
        beat_(loops_.front().executor()) {
    for (IoLoop& loop : loops_)
      lines_.emplace_back(loop.executor(), [this](std::string_view lines, std::size_t count) { log(lines, count); });
  }

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
    try_spool();
    pool_.start();
    for (std::size_t i = 0; i < loops_.size(); ++i) {
      loops_[i].start([this] { serve(); }, [this](std::string_view problem) { on_failure(problem); },
                      [this, i] { lines_[i].flush(); });
      started_ = true;
    }
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
    stop_accepting();
    for (const auto& connection : table_.all()) connection->close_when_idle();
    all_answered_ = !started_ || table_.wait_until_empty(grace);
    for (const auto& connection : table_.all()) connection->abort();
    pool_.stop();
    table_.wait_until_empty(kLastSteps);
    for (IoLoop& loop : loops_) loop.stop();
    return all_answered_;
  }

 private:
  void listen() {
    base::FileDescriptor socket(options_.listening_socket);
    if (!socket) socket = listen_on(options_.address, options_.port);
    acceptor_.assign(asio::ip::make_address(options_.address).is_v6() ? tcp::v6() : tcp::v4(), socket.get());
    socket.release();
    port_ = acceptor_.local_endpoint().port();
  }

  void stop_accepting() {
    std::promise<void> done;
    const auto close = [this, &done] {
      boost::system::error_code ignored;
      acceptor_.close(ignored);
      retry_.cancel();
      done.set_value();
    };
    started_ ? asio::post(loops_.front().executor(), close) : close();
    done.get_future().wait();
  }

  // Better said now than when the first slow client comes.
  void try_spool() {
    try {
      const SpoolFile file(spool_);
    } catch (const std::system_error& error) {
      report(std::string(error.what()) + "; what slow clients do not take must fit into memory");
    }
  }

  // What keeps the server listening, on the first loop, whichever begins or begins again.
  void serve() {
    asio::post(loops_.front().executor(), [this] {
      accept();
      beat();
    });
  }

  void on_failure(std::string_view problem) {
    report(problem);
    if (!accepting_) std::this_thread::sleep_for(kPause);
  }

  // Whatever fails in here, someone accepts again.
  void accept() {
    if (accepting_.exchange(true)) return;
    Waiting waiting(&accepting_);
    IoLoop& loop = loops_[next_loop_++ % loops_.size()];
    acceptor_.async_accept(loop.executor(), [this, &loop, waiting = std::move(waiting)](
                                                const boost::system::error_code& error, Socket socket) mutable {
      waiting.reset();
      if (shared_.stopping || error == asio::error::operation_aborted) return;
      if (error) return accept_later(error);
      accept();
      adopt(std::move(socket), loop);
    });
  }

  // Mostly no descriptor is left: one becomes free when a connection ends.
  void accept_later(const boost::system::error_code& error) {
    if (!std::exchange(starved_, true)) report("accepting a connection: " + error.message());
    if (const auto connection = table_.take_oldest()) connection->give_way();
    retry_.expires_after(kPause);
    retry_.async_wait([this](const boost::system::error_code& cancelled) {
      if (!cancelled && !shared_.stopping) accept();
    });
  }

  // Goes through all loops, so that it stays away while one of them is stuck.
  void beat() {
    if (!options_.on_beat || beating_.exchange(true)) return;
    Waiting waiting(&beating_);
    options_.on_beat();
    beat_.expires_after(options_.beat);
    beat_.async_wait([this, waiting = std::move(waiting)](const boost::system::error_code& cancelled) mutable {
      if (!cancelled) pass_beat_on(1, std::move(waiting));
    });
  }

  void pass_beat_on(std::size_t loop, Waiting waiting) {
    asio::post(loops_[loop % loops_.size()].executor(), [this, loop, waiting = std::move(waiting)]() mutable {
      if (loop < loops_.size()) return pass_beat_on(loop + 1, std::move(waiting));
      waiting.reset();
      beat();
    });
  }

  std::shared_ptr<const ConnectionTerms> terms() {
    const std::lock_guard lock(lock_);
    return terms_;
  }

  void adopt(Socket socket, IoLoop& loop) {
    starved_ = false;
    boost::system::error_code error;
    const auto client = socket.remote_endpoint(error).address();
    if (error || shared_.stopping) return;
    const auto terms = this->terms();
    const auto connection = std::make_shared<Connection>(std::move(socket), loop.mailbox(), terms, shared_);
    const bool is_exempt =
        std::ranges::find(terms->trusted_proxies, client.to_string()) != terms->trusted_proxies.end() ||
        (unmapped(client).is_loopback() && !options_.limits.limits_loopback);
    const auto admission = table_.admit(connection, client, !is_exempt);
    if (admission.gives_way) admission.gives_way->give_way();
    admission.admitted ? connection->start() : connection->turn_away();
  }

  void log(const AccessRecord& record, const IoLoop::Executor& loop, bool at_once) {
    if (options_.on_access_lines) {
      const auto found = std::ranges::find_if(loops_, [&](IoLoop& one) { return one.executor() == loop; });
      AccessLines& lines = lines_[static_cast<std::size_t>(found - loops_.begin())];
      lines.add(record);
      if (at_once) lines.flush();
    }
    if (!options_.on_access) return;
    const std::lock_guard lock(log_lock_);
    options_.on_access(record);
  }

  void log(std::string_view lines, std::size_t count) const {
    try {
      options_.on_access_lines(lines, count);
    } catch (const std::bad_alloc& problem) {
      report(problem.what());
    }
  }

  // Called where an exception has just been caught: what cannot be told must not end the program.
  void report(std::string_view problem) const noexcept {
    try {
      if (options_.on_problem) options_.on_problem(problem);
    } catch (const std::exception&) {
      return;
    }
  }

  const ServerOptions options_;
  std::mutex log_lock_;
  std::mutex lock_;  // guards terms_; never held while they are released
  std::shared_ptr<const ConnectionTerms> terms_;
  ConnectionTable table_;
  Spool spool_;
  WorkerPool pool_;
  ConnectionShared shared_;
  std::atomic<bool> accepting_ = false;
  std::atomic<bool> beating_ = false;
  bool started_ = false;
  std::deque<AccessLines> lines_;  // of each loop
  // A deque by itself destroys its elements in an order of its own.
  struct Loops : std::deque<IoLoop> {
    using std::deque<IoLoop>::deque;
    ~Loops() {
      while (!empty()) pop_front();
    }
  };
  // Behind what their handlers use: destroying them destroys the connections that are left. The first one accepts for
  // all, and goes first: what it holds may be a socket of any other.
  Loops loops_;
  std::size_t next_loop_ = 0;
  asio::basic_socket_acceptor<tcp, IoLoop::Executor> acceptor_;
  Timer retry_;
  Timer beat_;
  bool starved_ = false;  // and the log knows
  std::uint16_t port_ = 0;
  bool stopped_ = false;
  bool all_answered_ = true;
};

Server::Server(ServerOptions options, WorkerFactory factory, Router* router)
    : impl_(std::make_unique<Impl>(std::move(options), std::move(factory), router)) {}

Server::~Server() = default;

void Server::start() { impl_->start(); }

std::uint16_t Server::port() const { return impl_->port(); }

void Server::change(const HttpLimits& limits, std::vector<std::string> trusted_proxies) {
  impl_->change(limits, std::move(trusted_proxies));
}

bool Server::stop(std::chrono::milliseconds grace) { return impl_->stop(grace); }

}  // namespace zelto
