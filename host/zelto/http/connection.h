// One client's connection: reads requests, has them answered, and sends the answers at the client's pace.
#pragma once

#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "http/access_log.h"
#include "http/answer_queue.h"
#include "http/answer_sender.h"
#include "http/client_watch.h"
#include "http/connection_table.h"
#include "http/deadline.h"
#include "http/limits.h"
#include "http/mailbox.h"
#include "http/page_job.h"
#include "http/peer.h"
#include "http/request_reader.h"
#include "http/request_record.h"
#include "http/socket_sink.h"
#include "http/spool.h"
#include "http/worker_pool.h"

namespace zelto {

// What holds for a connection from its beginning to its end.
struct ConnectionTerms {
  HttpLimits limits;
  std::vector<std::string> trusted_proxies;
};

// What all connections of a server share; it outlives them.
struct ConnectionShared {
  WorkerPool& pool;
  ConnectionTable& table;
  Spool& spool;
  Router* router;  // null when workers answer everything
  // `at_once`: before whoever sees the connection's end looks for the line.
  std::function<void(const AccessRecord&, const IoLoop::Executor& loop, bool at_once)> log;
  std::function<void(std::string_view)> report;  // of what goes wrong in the server itself
  std::atomic<bool> stopping = false;
};

// Runs on its socket's loop. While its job is out, a worker writes the answer, and the loop does nothing with the
// request, the sink or the socket but send what waits, or reset it.
class Connection final : public std::enable_shared_from_this<Connection> {
 public:
  // The mailbox is that of the socket's loop.
  using Terms = std::shared_ptr<const ConnectionTerms>;
  Connection(Socket socket, Mailbox& mailbox, Terms terms, ConnectionShared& shared);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // These may be called from any thread.
  void start() { post(&Connection::begin); }
  // The server has too many connections: says so and closes.
  void turn_away() { post(&Connection::answer_too_many); }
  // To another connection, unless a request has begun meanwhile.
  void give_way() { post(&Connection::close_unless_answering); }
  void close_when_idle() { post(&Connection::close_soon); }
  void abort() { post(&Connection::end_at_once); }

 private:
  using Error = boost::system::error_code;
  using Clock = std::chrono::steady_clock;
  using Duration = HttpLimits::Duration;
  using Step = void (Connection::*)();
  enum class Phase { idle, head, body, answering, sending, draining, closed };

  void post(Step step);
  // From the worker to the loop.
  void hand_back(Mailbox& mailbox);
  static void open_answered(void* connection) noexcept;
  static void release_answer(void* connection) noexcept;
  // A step that fails, for want of memory, ends the connection: nothing would wake it again.
  template <class Function>
  void guarded(Function step) noexcept;

  void begin();
  void answer_too_many();
  void close_unless_answering() {
    watch_.look();
    if (phase_ != Phase::answering) return cut_off();
    last_ = true;  // its worker is about to hand it back
  }
  void close_soon();
  void end_at_once();
  void receive(Step next);
  void on_received(const Error& error, Step next);
  void read_head();
  void on_head();
  void begin_body();
  void read_body();
  void read_more_of_body();

  void route();
  void prepare_sink(bool keep_alive, Duration patience = {});
  void submit();
  void submit_unread();
  void on_answered();
  void answer_unread();
  void refuse(int status);
  void refuse_busy();
  void answer_plainly(int status, std::vector<Header> headers, bool keep_alive);
  void on_written();
  void send() { sender_.send(shared_from_this()); }
  void send_for_worker() {
    if (job_.is_out()) post(&Connection::send);
  }
  void on_sent();
  void log_answer(bool is_last = true);
  void cut_off();
  void next_request();
  void read_next();
  void drain();
  void drain_more();
  void close();
  void reset();

  void arm(Duration duration) { deadline_.arm(duration, shared_from_this()); }
  void on_timeout();
  bool is_idle() const { return phase_ == Phase::idle || (phase_ == Phase::head && !reader_.has_begun()); }
  const HttpLimits& limits() const { return terms_->limits; }

  Socket socket_;
  const Ends ends_;
  const Terms terms_;
  ConnectionShared& shared_;
  Deadline deadline_;

  Phase phase_ = Phase::head;
  bool last_ = false;           // the connection closes after this answer
  bool unread_input_ = false;   // the request was answered before it was read to its end
  bool page_answered_ = false;  // that request, and not the host
  bool aborted_ = false;
  bool timed_out_ = false;
  unsigned served_ = 0;

  RequestReader reader_;
  ReadRate read_rate_;  // of a body
  std::uint64_t drained_ = 0;
  RequestRecord record_;
  std::string turn_;  // of the request that is answered
  AnswerQueue queue_;
  SocketSink sink_;
  AnswerSender sender_;
  ClientWatch watch_;
  PageJob job_;
};

template <class Function>
void Connection::guarded(Function step) noexcept {
  try {
    step();
  } catch (const std::exception& problem) {
    shared_.report(problem.what());
    end_at_once();
  }
}

inline void Connection::post(Step step) {
  boost::asio::post(socket_.get_executor(),
                    [self = shared_from_this(), step] { self->guarded([&] { (*self.*step)(); }); });
}

// What is left to do when the socket has taken all of an answer can wait until the client sends more.
inline void Connection::hand_back(Mailbox& mailbox) {
  Letter letter{shared_from_this(), &open_answered};
  if (queue_.is_held()) WorkerPool::put_off({letter.owner, &release_answer});
  if (queue_.is_sending() || sink_.must_close()) return mailbox.send(std::move(letter));
  record_.stop();
  shared_.table.set_state(this, ConnectionState::waiting);
  watch_.leave(std::move(letter));
}

inline void Connection::open_answered(void* connection) noexcept {
  auto* const self = static_cast<Connection*>(connection);
  self->guarded([self] {
    self->queue_.release();  // before the worker does: from now on it leaves the socket alone
    self->on_answered();
  });
}

inline void Connection::release_answer(void* connection) noexcept {
  auto* const self = static_cast<Connection*>(connection);
  try {
    self->queue_.release();
  } catch (const std::bad_alloc&) {
    self->queue_.fail();  // the loop finds that out when it looks for what the worker has left
  }
}

}  // namespace zelto
