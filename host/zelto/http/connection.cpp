#include "http/connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <string_view>
#include <utility>

#include "base/letter_case.h"
#include "http/framing.h"
#include "http/status.h"

namespace zelto {

namespace asio = boost::asio;

namespace {

constexpr std::size_t kReadSize = std::size_t{16} * 1024;
constexpr std::size_t kBodyReadSize = std::size_t{64} * 1024;
// What the end of the server leaves a client to take its last answer.
constexpr HttpLimits::Duration kLastDrain(250);
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

// What a proxy says about its own client. Of two headers, one may have come from that client.
bool came_encrypted(const HttpRequest& request, const std::vector<std::string>& trusted_proxies) {
  if (std::ranges::find(trusted_proxies, request.remote_address) == trusted_proxies.end()) return false;
  const auto is_said = [](const Header& header) { return base::equal_ascii(header.name, "X-Forwarded-Proto"); };
  return std::ranges::count_if(request.headers, is_said) == 1 &&
         base::equal_ascii(*request.header("X-Forwarded-Proto"), "https");
}

bool has_gone(int socket) {
  pollfd state{socket, 0, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLERR | POLLHUP)) != 0;
}

// Takes the connection from under its socket. The client sees a reset: after a shutdown, a body that ends with the
// connection would look complete. The system call may be made by any thread while a worker writes; connect() would do
// the same, but the thread sanitizer takes it for the making of another socket.
void reset_peer(int socket) {
  const sockaddr nobody{.sa_family = AF_UNSPEC, .sa_data = {}};
  ::syscall(SYS_connect, socket, &nobody, sizeof nobody);
}

}  // namespace

Connection::Connection(Socket socket, std::shared_ptr<const ConnectionTerms> terms, ConnectionShared& shared)
    : socket_(std::move(socket)),
      terms_(std::move(terms)),
      shared_(shared),
      deadline_(socket_.get_executor(), [this] { on_timeout(); }),
      reader_(limits(), shared.spool),
      read_rate_(limits().body_timeout, limits().body_rate),
      // A worker may write, so that sending is left to the strand.
      queue_(shared.spool, limits().send_memory,
             [this] { asio::post(socket_.get_executor(), [self = shared_from_this()] { self->sender_.send(self); }); }),
      sink_(queue_),
      sender_(socket_, queue_, deadline_, limits(), [this] {
        if (phase_ == Phase::sending) on_sent();
      }) {}

Connection::~Connection() { shared_.table.remove(this); }

void Connection::start() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] { self->begin(); });
}

void Connection::begin() {
  if (shared_.stopping) return close();
  Error ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  arm(limits().header_timeout);
  read_head();
}

void Connection::turn_away() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    self->fill_record("-");
    self->prepare_sink(false);
    serve_status(self->sink_, status::kUnavailable, {}, {{"Retry-After", "5"}});
    self->log_answer();
    Error ignored;
    self->socket_.shutdown(Socket::shutdown_send, ignored);
    // What has come by now is taken, as closing would otherwise reset the connection under the answer.
    self->socket_.non_blocking(true, ignored);
    const auto room = self->reader_.room(kReadSize);
    self->socket_.read_some(asio::buffer(room.data(), room.size()), ignored);
    self->close();
  });
}

void Connection::give_way() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    if (self->phase_ == Phase::sending)
      self->cut_off();
    else if (self->phase_ == Phase::body || self->phase_ == Phase::head || self->is_idle() ||
             self->phase_ == Phase::draining)
      self->close();
  });
}

void Connection::close_when_idle() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    self->last_ = true;
    if (self->is_idle() || self->phase_ == Phase::draining) self->close();
  });
}

void Connection::abort() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    self->aborted_ = true;
    if (self->in_worker_ && self->shared_.pool.withdraw(*self, self->turn_)) self->in_worker_ = false;
    // The descriptor must stay open while a worker may write to it.
    if (self->in_worker_)
      reset_peer(self->socket_.native_handle());
    else if (self->phase_ == Phase::sending)
      self->cut_off();
    else
      self->close();
  });
}

// --- receiving

void Connection::receive(Step next) {
  const auto room = reader_.room(phase_ == Phase::body ? kBodyReadSize : kReadSize);
  socket_.async_read_some(asio::buffer(room.data(), room.size()),
                          [self = shared_from_this(), next](const Error& error, std::size_t count) {
                            self->reader_.received(count);
                            self->on_received(error, next);
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

void Connection::fill_record(std::string_view request_line) {
  Error error;
  const auto remote = socket_.remote_endpoint(error);
  record_ = AccessRecord();
  if (!error) record_.remote_address = remote.address().to_string();
  record_.request_line = request_line;
  record_.received = std::chrono::system_clock::now();
  began_ = Clock::now();
}

void Connection::on_head() {
  fill_record(reader_.request_line());
  const HttpRequest& request = reader_.request();
  if (const auto* referer = request.header("Referer")) record_.referer = *referer;
  if (const auto* agent = request.header("User-Agent")) record_.user_agent = *agent;
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
  shared_.table.set_state(this, ConnectionState::exchanging);
  read_rate_.begin(Clock::now());
  if (!reader_.awaits_continue()) return read_body();
  std::size_t used = 0;
  if (reader_.read_body(used) == RequestReader::Progress::too_large) return submit_unread();
  arm(limits().send_timeout);
  asio::async_write(socket_, asio::buffer(kContinue.data(), kContinue.size()),
                    [self = shared_from_this()](const Error& error, std::size_t) {
                      self->on_received(error, &Connection::read_body);
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
  Error error;
  const auto local = socket_.local_endpoint(error);
  if (!error) request.local_address = local.address().to_string();
  if (!error) request.local_port = local.port();
  const auto remote = socket_.remote_endpoint(error);
  request.remote_address = record_.remote_address;
  if (!error) request.remote_port = remote.port();
  request.secure = came_encrypted(request, terms_->trusted_proxies);
  prepare_sink(!last_ && !unread_input_, limits().send_timeout);
  in_worker_ = true;
  switch (shared_.pool.submit(shared_from_this(), turn_)) {
    case WorkerPool::Submitted::queued:
      return;
    case WorkerPool::Submitted::waits_for_turn:
      return arm(limits().turn_timeout);
    case WorkerPool::Submitted::refused:
      return refuse_busy();
  }
}

void Connection::refuse_busy() {
  in_worker_ = page_answered_ = false;
  answer_plainly(status::kUnavailable, {{"Retry-After", "1"}}, !last_ && !unread_input_);
}

void Connection::run(Worker& worker) {
  try {
    // One that has only closed its side waits for its answer.
    if (has_gone(socket_.native_handle()))
      sink_.abandon();
    else
      handle(worker);
  } catch (...) {
    sink_.abandon();
  }
  asio::post(socket_.get_executor(), [self = shared_from_this()] { self->on_answered(); });
}

void Connection::handle(Worker& worker) {
  try {
    reader_.request().body.load();
  } catch (const std::exception& error) {
    shared_.report(std::string("a request's body is lost: ") + error.what());
    return serve_status(sink_, status::kUnavailable);
  }
  try {
    worker.handle(std::move(reader_.request()), sink_);
  } catch (...) {
    if (sink_.started()) sink_.abandon();
  }
  if (!sink_.started()) serve_status(sink_, status::kServerError, "The page gave no answer.");
  if (!sink_.finished()) sink_.abandon();
}

void Connection::on_answered() {
  in_worker_ = false;
  if (!aborted_) return on_written();
  log_answer();
  close();
}

void Connection::refuse(int status) {
  timed_out_ = false;
  if (phase_ == Phase::head && record_.request_line.empty()) fill_record(reader_.request_line());
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
  shared_.table.set_state(this, ConnectionState::exchanging);
  sender_.send(shared_from_this());
}

void Connection::log_answer() {
  record_.status = sink_.status();
  record_.body_bytes = sink_.body_bytes();
  record_.note = sink_.note();
  record_.taken = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - began_);
  shared_.log(record_);
}

void Connection::on_sent() {
  log_answer();
  if (sink_.must_reset()) {
    reset();
  } else if (last_ || unread_input_ || sink_.must_close()) {
    drain();
  } else {
    next_request();
  }
}

void Connection::cut_off() {
  log_answer();
  reset();
}

void Connection::next_request() {
  sink_.reset(-1, {});
  reader_.next();
  record_ = AccessRecord();
  phase_ = Phase::idle;
  arm(limits().keep_alive_timeout);
  shared_.table.set_state(this, ConnectionState::waiting);
  // Posted, not called: a client may have sent any number of requests at once.
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    if (self->phase_ == Phase::idle) self->read_head();
  });
}

// Closing while the client still sends would reset the connection and lose the answer on its way. So some of that is
// read and dropped; a client that sends more has until the end of the time to read its answer. Of an upload that is too
// large everything is: a browser reads the page's answer only when it has sent it all.
void Connection::drain() {
  phase_ = Phase::draining;
  sink_.reset(-1, {});
  Error ignored;
  socket_.shutdown(Socket::shutdown_send, ignored);
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
    if (shared_.pool.withdraw(*this, turn_)) refuse_busy();
    return;
  }
  timed_out_ = true;
  socket_.cancel();  // whatever waits for the client now fails
}

bool Connection::is_idle() const { return phase_ == Phase::idle || (phase_ == Phase::head && !reader_.has_begun()); }

}  // namespace zelto
