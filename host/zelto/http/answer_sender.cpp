#include "http/answer_sender.h"

#include <sys/sendfile.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <cerrno>
#include <cstdint>

namespace zelto {

namespace {

// What is sent of a file before other connections get their turn.
constexpr std::size_t kFilePass = std::size_t{1024} * 1024;

using Error = boost::system::error_code;

}  // namespace

void AnswerSender::send(const std::shared_ptr<void>& owner) {
  sent_ = 0;
  send_bytes(owner);
}

void AnswerSender::send_bytes(const std::shared_ptr<void>& owner) {
  const std::string& bytes = sink_.unsent().bytes;
  if (sink_.failed()) return on_sent_();
  if (sent_ == bytes.size()) return send_file(owner);
  deadline_.arm(timeout_, owner);
  socket_.async_write_some(boost::asio::buffer(bytes.data() + sent_, bytes.size() - sent_),
                           [this, owner](const Error& error, std::size_t count) {
                             sent_ += count;
                             if (error) sink_.abandon();
                             if (socket_.is_open()) send_bytes(owner);
                           });
}

void AnswerSender::send_file(const std::shared_ptr<void>& owner) {
  Unsent& rest = sink_.unsent();
  if (!rest.file) return on_sent_();
  std::size_t pass = 0;
  while (rest.length > 0 && pass < kFilePass) {
    auto offset = static_cast<off_t>(rest.offset);
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(rest.length, kFilePass));
    const ssize_t sent = ::sendfile(socket_.native_handle(), rest.file.get(), &offset, most);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && errno == EAGAIN) break;
    if (sent <= 0) {  // the client has gone, or the file has become shorter
      sink_.abandon();
      return on_sent_();
    }
    rest.offset += static_cast<std::uint64_t>(sent);
    rest.length -= static_cast<std::uint64_t>(sent);
    pass += static_cast<std::size_t>(sent);
  }
  if (rest.length == 0) return on_sent_();
  deadline_.arm(timeout_, owner);
  socket_.async_wait(Socket::wait_write, [this, owner](const Error& error) {
    if (error) sink_.abandon();
    if (socket_.is_open()) send_file(owner);
  });
}

}  // namespace zelto
