#include "zelto/http/client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace zelto_test {

namespace {

// Far more than anything waited for here takes; a test that runs into it fails.
constexpr int kPatience = 60'000;

std::string lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

std::string Answer::header(const std::string& name) const {
  const auto found = headers.find(lower(name));
  return found == headers.end() ? "" : found->second;
}

Client::Client(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(socket_);
    throw std::runtime_error("connection refused");
  }
}

Client::~Client() { ::close(socket_); }

bool Client::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool Client::fill() {
  pollfd waiting{socket_, POLLIN, 0};
  if (::poll(&waiting, 1, kPatience) <= 0) throw std::runtime_error("the server does not answer");
  std::array<char, 65536> buffer{};
  const ssize_t count = ::recv(socket_, buffer.data(), buffer.size(), 0);
  reset_by_server_ = count < 0 && errno == ECONNRESET;
  if (count <= 0) return false;
  input_.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

bool Client::fill_to(std::size_t size) {
  while (input_.size() < size)
    if (!fill()) return false;
  return true;
}

std::optional<Answer> Client::receive(bool head_only) {
  std::size_t end = 0;
  while ((end = input_.find("\r\n\r\n")) == std::string::npos)
    if (!fill()) return std::nullopt;
  Answer answer;
  answer.status = std::atoi(input_.c_str() + 9);
  for (std::size_t at = input_.find("\r\n") + 2; at < end + 2;) {
    const auto line_end = input_.find("\r\n", at);
    const auto colon = input_.find(": ", at);
    answer.headers[lower(input_.substr(at, colon - at))] = input_.substr(colon + 2, line_end - colon - 2);
    at = line_end + 2;
  }
  input_.erase(0, end + 4);
  if (head_only || answer.status / 100 == 1 || answer.status == 204 || answer.status == 304) return answer;
  if (answer.header("Transfer-Encoding") == "chunked") {
    for (;;) {
      std::size_t line = 0;
      while ((line = input_.find("\r\n")) == std::string::npos) {
        if (fill()) continue;
        broken_body_ = answer.body;
        return std::nullopt;
      }
      const std::size_t size = std::stoul(input_.substr(0, line), nullptr, 16);
      if (!fill_to(line + 2 + size + 2)) return std::nullopt;
      answer.body += input_.substr(line + 2, size);
      input_.erase(0, line + 2 + size + 2);
      if (size == 0) return answer;
    }
  }
  if (answer.headers.contains("content-length")) {
    const std::size_t size = std::stoul(answer.header("Content-Length"));
    if (!fill_to(size)) return std::nullopt;
    answer.body = input_.substr(0, size);
    input_.erase(0, size);
    return answer;
  }
  while (fill()) continue;
  answer.body.swap(input_);
  if (!reset_by_server_) return answer;
  broken_body_ = answer.body;
  return std::nullopt;
}

std::string Client::read_to_end() {
  while (fill()) continue;
  return std::exchange(input_, {});
}

bool Client::has_input() {
  pollfd state{socket_, POLLIN, 0};
  return !input_.empty() || ::poll(&state, 1, 0) > 0;
}

bool Client::at_end() { return input_.empty() && !fill(); }

void Client::finish_sending() { ::shutdown(socket_, SHUT_WR); }

void Client::reset() {
  const linger now{1, 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  ::close(socket_);
  socket_ = -1;
}

void Client::keep_receive_buffer_small() {
  const int size = 4096;
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

Answer ask(std::uint16_t port, std::string_view request) {
  Client client(port);
  client.send(request);
  return client.receive().value_or(Answer());
}

}  // namespace zelto_test
