// A client that sends bytes as a test says and reads answers as they come.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelto_test {

struct Answer {
  int status = 0;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;                            // with the chunks put together

  std::string header(const std::string& name) const;
};

class Client {
 public:
  explicit Client(std::uint16_t port);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // False when the server has gone.
  bool send(std::string_view bytes);
  // The next answer; its body is left out for HEAD. Nothing when the connection ends before one is complete.
  std::optional<Answer> receive(bool head_only = false);
  // True once the server has closed its side and nothing was left to read.
  bool at_end();
  // Whether something has come that was not received yet; does not wait.
  bool has_input();
  // The body that has come of the answer that was not complete.
  const std::string& broken_body() const { return broken_body_; }
  // What comes until the connection ends.
  std::string read_to_end();
  // Whether the connection has ended with a reset.
  bool was_reset() const { return reset_by_server_; }
  // Ends the sending side.
  void finish_sending();
  // Closes with a reset.
  void reset();
  void keep_receive_buffer_small();

 private:
  bool fill();
  bool fill_to(std::size_t size);

  int socket_;
  bool reset_by_server_ = false;
  std::string input_;
  std::string broken_body_;
};

// Connects, sends, receives one answer.
Answer ask(std::uint16_t port, std::string_view request);

}  // namespace zelto_test
