#include "http/connection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <new>
#include <string_view>
#include <utility>

#include "http/framing.h"
#include "http/peer.h"
#include "http/status.h"

namespace zelto {

namespace asio = boost::asio;

namespace {

constexpr std::size_t kReadSize = std::size_t{16} * 1024;
constexpr std::size_t kBodyReadSize = std::size_t{64} * 1024;
// What the end of the server leaves a client to take its last answer.
constexpr HttpLimits::Duration kLastDrain(250);
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

}  // namespace

Connection::Connection(Socket socket, Mailbox& mailbox, Terms terms, ConnectionShared& shared)
    : socket_(std::move(socket)),
      ends_(ends_of(socket_)),
      terms_(std::move(terms)),
      shared_(shared),
      deadline_(socket_.get_executor(), [this] { guarded([this] { on_timeout(); }); }),
      reader_(limits(), shared.spool),
      read_rate_(limits().body_timeout, limits().body_rate),
      // While a worker writes, sending is left to the loop; what the loop itself has written, on_written() sends.
      queue_(
          shared.spool, limits().send_memory, [this] { send_for_worker(); }, &WorkerPool::is_followed),
      sink_(queue_),
      sender_(socket_, queue_, deadline_, limits(), [this] { on_sent(); }),
      watch_(socket_, mailbox, [this] { guarded([this] { read_next(); }); }),
      job_(shared.pool, reader_, sink_, watch_, shared.report, [this, &mailbox] { hand_back(mailbox); }) {}

Connection::~Connection() { shared_.table.remove(this); }

void Connection::begin() {
  if (shared_.stopping && !has_received(socket_)) return close();
  last_ = shared_.stopping;
  Error ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  arm(limits().header_timeout);
  read_head();
}

void Connection::answer_too_many() {
  record_.begin(ends_.remote_address, "-");
  prepare_sink(false);
  serve_status(sink_, status::kUnavailable, {}, {{"Retry-After", "5"}});
  log_answer();
  end_sending(socket_);
  take_received(socket_);
  close();
}

void Connection::close_soon() {
  watch_.look();
  last_ = true;
  // What the client has sent already is still answered.
  if ((is_idle() && !has_received(socket_)) || phase_ == Phase::draining) close();
}

void Connection::end_at_once() {
  aborted_ = true;
  job_.withdraw();
  // The descriptor must stay open while a worker may write to it.
  job_.is_out() ? reset_peer(socket_.native_handle()) : cut_off();
}

// --- receiving

// The client has sent something, mostly a whole request. To read it at once spares the loop a round.
void Connection::read_next() {
  if (phase_ != Phase::idle) return;
  const auto room = reader_.room(kReadSize);
  reader_.received(receive_now(socket_, room));
  read_head();
}

void Connection::receive(Step next) {
  const auto room = reader_.room(phase_ == Phase::body ? kBodyReadSize : kReadSize);
  socket_.async_read_some(asio::buffer(room.data(), room.size()),
                          [self = shared_from_this(), next](const Error& error, std::size_t count) {
                            self->reader_.received(count);
                            self->guarded([&] { self->on_received(error, next); });
                          });
}

void Connection::on_received(const Error& error, Step next) {
  if (phase_ == Phase::closed) return;
  if (timed_out_)
    refuse(status::kRequestTimeout);
  else if (error)
    close();
  else
    (this->*next)();
}

void Connection::read_head() {
  const auto progress = reader_.read_head();
  if (phase_ == Phase::idle && (reader_.has_begun() || progress != RequestReader::Progress::more)) {
    phase_ = Phase::head;
    arm(limits().header_timeout);
  }
  if (progress == RequestReader::Progress::more) return receive(&Connection::read_head);
  if (progress == RequestReader::Progress::refused) return refuse(reader_.status());
  on_head();
}

void Connection::on_head() {
  const HttpRequest& request = reader_.request();
  record_.begin(ends_.remote_address, reader_.request_line());
  record_.add_client(request);
  ++served_;
  last_ |= !wants_keep_alive(request) || served_ >= limits().keep_alive_requests;
  shared_.table.set_state(this, ConnectionState::busy);
  route();
}

void Connection::route() {
  turn_.clear();
  if (shared_.router) {
    prepare_sink(!last_ && !reader_.needs_body());
    try {
      auto route = shared_.router->route(reader_.request(), sink_);
      turn_ = std::move(route.turn);
      if (route.answered || sink_.started()) return answer_unread();
    } catch (const std::exception& error) {
      shared_.report(reader_.request().path + ": " + error.what());
      sink_.started() ? sink_.abandon() : serve_status(sink_, status::kServerError);
      return answer_unread();
    }
  }
  if (reader_.needs_body())
    begin_body();
  else
    submit();
}

void Connection::begin_body() {
  phase_ = Phase::body;
  reader_.request().file_stamp.reset();  // a body may take long
  shared_.table.set_state(this, ConnectionState::exchanging);
  read_rate_.begin(Clock::now());
  if (!reader_.awaits_continue()) return read_body();
  std::size_t used = 0;
  if (reader_.read_body(used) == RequestReader::Progress::too_large) return submit_unread();
  arm(limits().send_timeout);
  asio::async_write(socket_, asio::buffer(kContinue.data(), kContinue.size()),
                    [self = shared_from_this()](const Error& error, std::size_t) {
                      self->guarded([&] { self->on_received(error, &Connection::read_body); });
                    });
}

void Connection::read_body() {
  try {
    read_more_of_body();
  } catch (const std::exception& error) {
    shared_.report(std::string("a request's body is refused: ") + error.what());
    refuse(status::kUnavailable);
  }
}

void Connection::read_more_of_body() {
  std::size_t used = 0;
  switch (reader_.read_body(used)) {
    case RequestReader::Progress::done:
      return submit();
    case RequestReader::Progress::too_large:
      return submit_unread();
    case RequestReader::Progress::refused:
      return refuse(reader_.status());
    case RequestReader::Progress::more:
      break;
  }
  if (read_rate_.is_too_slow(used, Clock::now())) return refuse(status::kRequestTimeout);
  arm(limits().body_timeout);
  receive(&Connection::read_body);
}

// --- answering

void Connection::prepare_sink(bool keep_alive, Duration patience) {
  sink_.reset(socket_.native_handle(), {.head_only = reader_.asks_head_only(),
                                        .minor_version = reader_.minor_version(),
                                        .keep_alive = keep_alive,
                                        .patience = patience,
                                        .stopping = &shared_.stopping});
}

void Connection::submit_unread() {
  unread_input_ = page_answered_ = true;
  submit();
}

void Connection::submit() {
  phase_ = Phase::answering;
  shared_.table.set_state(this, ConnectionState::busy);
  arm(Duration::zero());
  HttpRequest& request = reader_.request();
  request.remote_address = ends_.remote_address;
  request.remote_port = ends_.remote_port;
  request.local_address = ends_.local_address;
  request.local_port = ends_.local_port;
  request.secure = came_encrypted(request, terms_->trusted_proxies);
  prepare_sink(!last_ && !unread_input_, limits().send_timeout);
  sink_.must_close() ? watch_.forgo() : watch_.begin(shared_from_this(), reader_.has_begun());
  switch (job_.submit(shared_from_this(), turn_, socket_.native_handle())) {
    case WorkerPool::Submitted::queued:
      return;
    case WorkerPool::Submitted::waits_for_turn:
      return arm(limits().turn_timeout);
    case WorkerPool::Submitted::refused:
      return refuse_busy();
  }
}

void Connection::refuse_busy() {
  page_answered_ = false;
  answer_plainly(status::kUnavailable, {{"Retry-After", "1"}}, !last_ && !unread_input_);
}

void Connection::on_answered() {
  job_.take_back();
  if (!aborted_) return on_written();
  log_answer();
  close();
}

void Connection::refuse(int status) {
  timed_out_ = false;
  if (!record_.has_begun()) record_.begin(ends_.remote_address, reader_.request_line());
  unread_input_ = true;
  answer_plainly(status, {}, false);
}

void Connection::answer_plainly(int status, std::vector<Header> headers, bool keep_alive) {
  prepare_sink(keep_alive);
  serve_status(sink_, status, {}, std::move(headers));
  on_written();
}

// What was answered before its body was read.
void Connection::answer_unread() {
  unread_input_ |= reader_.needs_body();
  arm(Duration::zero());
  on_written();
}

void Connection::on_written() {
  phase_ = Phase::sending;
  if (!queue_.is_sending()) return on_sent();
  send();
  if (sender_.is_active()) shared_.table.set_state(this, ConnectionState::exchanging);
}

// A line that there is no memory for is lost; the connection goes on.
void Connection::log_answer(bool is_last) {
  try {
    shared_.log(record_.end(sink_), socket_.get_executor(), is_last);
  } catch (const std::bad_alloc& problem) {
    shared_.report(problem.what());
  }
}

void Connection::on_sent() {
  if (phase_ != Phase::sending) return;  // a worker still writes
  const bool is_last = last_ || unread_input_ || sink_.must_close();
  log_answer(is_last);
  if (sink_.must_reset()) {
    reset();
  } else if (is_last) {
    drain();
  } else {
    next_request();
  }
}

void Connection::cut_off() {
  if (phase_ != Phase::sending) return close();
  log_answer();
  reset();
}

void Connection::next_request() {
  sink_.reset(-1, {});
  reader_.next();
  record_.clear();
  phase_ = Phase::idle;
  arm(limits().keep_alive_timeout);
  shared_.table.set_state(this, ConnectionState::waiting);
  // Posted, not called: a client may have sent any number of requests at once.
  if (reader_.has_begun()) return post(&Connection::read_next);
  if (!watch_.await()) read_head();
}

// Closing while the client still sends would reset the connection and lose the answer on its way. So some of that is
// read and dropped; a client that sends more has until the end of the time to read its answer. Of an upload that is too
// large everything is: a browser reads the page's answer only when it has sent it all.
void Connection::drain() {
  phase_ = Phase::draining;
  sink_.reset(-1, {});
  end_sending(socket_);
  shared_.table.set_state(this, ConnectionState::waiting);
  drained_ = 0;
  arm(shared_.stopping ? kLastDrain : limits().drain_timeout);
  drain_more();
}

void Connection::drain_more() {
  drained_ += reader_.drop();
  if (drained_ < (page_answered_ ? limits().drain_upload_bytes : limits().drain_bytes)) {
    receive(&Connection::drain_more);
  }
}

void Connection::close() {
  phase_ = Phase::closed;
  deadline_.stop();
  Error ignored;
  socket_.close(ignored);
}

// Shows the client that the answer is not whole, and drops what it has not read.
void Connection::reset() {
  Error ignored;
  socket_.set_option(asio::socket_base::linger(true, 0), ignored);
  close();
}

void Connection::on_timeout() {
  if (is_idle() || phase_ == Phase::draining) return close();
  if (sender_.is_active()) return sender_.on_timeout(shared_from_this());
  if (phase_ == Phase::answering) {
    if (job_.withdraw()) refuse_busy();
    return;
  }
  timed_out_ = true;
  socket_.cancel();  // whatever waits for the client now fails
}

}  // namespace zelto
