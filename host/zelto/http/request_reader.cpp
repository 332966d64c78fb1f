#include "http/request_reader.h"

#include "http/framing.h"
#include "http/status.h"

namespace zelto {

namespace {

// What of the room for received bytes is kept from one request to the next.
constexpr std::size_t kKeptRoom = std::size_t{16} * 1024;

}  // namespace

std::span<char> RequestReader::room(std::size_t size) {
  const auto room = input_.prepare(size);
  return {static_cast<char*>(room.data()), room.size()};
}

void RequestReader::received(std::size_t count) { input_.commit(count); }

std::size_t RequestReader::drop() {
  const std::size_t dropped = input_.size();
  input_.consume(dropped);
  return dropped;
}

RequestReader::Progress RequestReader::refuse(int status) {
  status_ = status;
  return Progress::refused;
}

// Some clients end a body with a line break too many.
void RequestReader::skip_line_breaks() {
  std::size_t skipped = 0;
  while (input().substr(skipped).starts_with("\r\n")) skipped += 2;
  if (skipped == 0) return;
  input_.consume(skipped);
  scanner_.emplace(limits_.header_bytes, limits_.header_lines);
}

RequestReader::Progress RequestReader::read_head() {
  skip_line_breaks();
  if (input_.size() == 0) return Progress::more;
  switch (scanner_->scan(input())) {
    case HeadScanner::Verdict::more:
      return Progress::more;
    case HeadScanner::Verdict::complete:
      break;
    case HeadScanner::Verdict::target_too_long:
      return refuse(status::kTargetTooLong);
    case HeadScanner::Verdict::too_large:
      return refuse(status::kHeadTooLarge);
    case HeadScanner::Verdict::bare_line_end:
    case HeadScanner::Verdict::folded:
      return refuse(status::kBadRequest);
  }
  request_line_ = request_line();
  parser_.emplace(limits_);
  parser_->request().body.use(spool_);
  const int status = parser_->parse_head(input().substr(0, scanner_->size()));
  input_.consume(scanner_->size());
  return status == status::kOk ? Progress::done : refuse(status);
}

RequestReader::Progress RequestReader::read_body(std::size_t& used) {
  const auto progress = parser_->parse_body(input(), used);
  input_.consume(used);
  switch (progress) {
    case RequestParser::Progress::done:
      return Progress::done;
    case RequestParser::Progress::too_large:
      return Progress::too_large;
    case RequestParser::Progress::too_many_parts:
      return refuse(status::kContentTooLarge);
    case RequestParser::Progress::bad:
      return refuse(status::kBadRequest);
    case RequestParser::Progress::trailer_too_large:
      return refuse(status::kHeadTooLarge);
    case RequestParser::Progress::more:
      break;
  }
  // What is left now is one chunk's line or a trailer.
  return input_.size() > limits_.header_bytes ? refuse(status::kBadRequest) : Progress::more;
}

void RequestReader::next() {
  parser_.reset();
  request_line_.clear();
  if (input_.size() == 0 && input_.capacity() > kKeptRoom) input_ = {};
  scanner_.emplace(limits_.header_bytes, limits_.header_lines);
}

bool RequestReader::awaits_continue() const { return input_.size() == 0 && expects_continue(parser_->request()); }

std::string_view RequestReader::request_line() const {
  if (!request_line_.empty()) return request_line_;
  return input().substr(0, input().find_first_of("\r\n"));
}

}  // namespace zelto
