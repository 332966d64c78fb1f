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
  // Ends the sending side.
  void finish_sending();
  // Closes with a reset.
  void reset();
  void keep_receive_buffer_small();

 private:
  bool fill();
  bool fill_to(std::size_t size);

  int socket_;
  std::string input_;
};

// Connects, sends, receives one answer.
Answer ask(std::uint16_t port, std::string_view request);

}  // namespace zelto_test
