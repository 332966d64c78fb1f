// What passes between the network and a page: a received request, and the sink of its response.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_descriptor.h"
#include "base/file_stamp.h"
#include "http/body.h"

namespace zelto {

struct Header {
  std::string name;
  std::string value;
};

// A request as received: framed and checked, its body complete. Header names keep their letter case
// and order; they are compared without regard to case.
struct HttpRequest {
  std::string method;  // as sent, "GET"
  std::string target;  // as sent, "/a%20b/x.asp?q=1"
  std::string path;    // percent-decoded once, normalised, always beginning with '/'
  std::string query;   // as sent, without the question mark
  int minor_version = 1;
  std::vector<Header> headers;
  Body body;
  // The body was larger than the limit: `body` is empty and `body_length` tells what was announced or
  // counted before it was given up.
  bool body_too_large = false;
  std::uint64_t body_length = 0;
  std::string remote_address;
  std::uint16_t remote_port = 0;
  std::string local_address;
  std::uint16_t local_port = 0;
  bool secure = false;
  std::string file;                           // what the path names, when whoever routed the request knows
  std::optional<base::FileStamp> file_stamp;  // as it was then

  // The first header of that name, compared without regard to case; null when there is none.
  const std::string* header(std::string_view name) const;
};

// Whether a proxy that is trusted says that its own client's connection was encrypted. `trusted_proxies` are addresses
// as in remote_address.
bool came_encrypted(const HttpRequest& request, const std::vector<std::string>& trusted_proxies);

// Whether the connection alone writes headers of that name: one from a page would repeat or contradict its own.
bool is_connection_header(std::string_view name);

struct ResponseHead {
  int status = 200;
  std::string reason = "OK";
  std::vector<Header> headers;  // those of the connection are not sent
  // In front of these: what write_header_lines() once wrote, for answers that are alike. Read by start() only.
  std::string_view lines = {};
};

// A file that several answers may be sent from at a time.
using SharedFile = std::shared_ptr<const base::FileDescriptor>;

// Where a response goes. One thread calls it, in the order start, write…, finish or break_off. A client that has
// gone makes the calls do nothing; connected() tells.
class ResponseSink {
 public:
  virtual ~ResponseSink() = default;

  // `length` is the body's size when it is known already, else kUnknownLength: the connection then
  // frames the body itself.
  virtual void start(ResponseHead head, std::uint64_t length) = 0;
  // Does not wait for the client, unless there is no room left for what it has not taken.
  virtual void write(std::string_view bytes) = 0;
  // In place of the last write: `length` bytes of the file from `offset`, sent without keeping the calling thread.
  virtual void write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) = 0;
  virtual void finish() = 0;
  // In place of finish(), when the response cannot be completed: sends what was written, then ends the connection so
  // that the client sees that the rest is missing.
  virtual void break_off() = 0;
  // False once the client has closed its side or a write has failed.
  virtual bool connected() const = 0;
  // Nothing that is written arrives any more: a page need not go on. A client that has only closed its side may still
  // read.
  virtual bool failed() const = 0;
  // Text that a page adds to the access log's line of this request.
  virtual void append_to_log(std::string_view text) = 0;

  static constexpr std::uint64_t kUnknownLength = ~std::uint64_t{0};
};

}  // namespace zelto
