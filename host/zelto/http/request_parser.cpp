#include "http/request_parser.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/basic_parser.hpp>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "http/framing.h"
#include "http/part_counter.h"
#include "http/status.h"
#include "http/target.h"

namespace zelto {

namespace beast = boost::beast;
namespace http = beast::http;

namespace {

std::string_view to_view(beast::string_view text) { return {text.data(), text.size()}; }

std::string to_string(beast::string_view text) { return {text.data(), text.size()}; }

// True when the request line ends as one of another version would: "GET / HTTP/2.0".
bool names_a_version(std::string_view head) {
  const std::string_view line = head.substr(0, head.find('\r'));
  if (std::ranges::count(line, ' ') != 2) return false;
  const std::string_view version = line.substr(line.rfind(' ') + 1);
  return version.size() == 8 && version.starts_with("HTTP/") && base::is_digit(version[5]) && version[6] == '.' &&
         base::is_digit(version[7]);
}

// A host in the target wins over the Host header, which a proxy may have rewritten.
void set_host(HttpRequest& request, std::string&& host) {
  const auto named = [](const Header& header) { return base::equal_ascii(header.name, "Host"); };
  const auto found = std::ranges::find_if(request.headers, named);
  if (found == request.headers.end())
    request.headers.push_back({"Host", std::move(host)});
  else
    found->value = std::move(host);
}

// The trailer as far as it has come, when nothing but the last chunk's line is in front of it: the library takes a
// trailer only when it has ended.
std::string_view unended_trailer(std::string_view left) {
  if (left.starts_with("\r\n")) left.remove_prefix(2);
  const std::size_t digits = std::min(left.find_first_not_of('0'), left.size());
  const std::size_t line_end = left.find("\r\n", digits);
  if (digits == 0 || line_end == std::string_view::npos || (line_end > digits && left[digits] != ';')) return {};
  return left.substr(line_end + 2);
}

}  // namespace

HeadScanner::Verdict HeadScanner::scan(std::string_view received) {
  for (;;) {
    const auto end = received.find('\n', scanned_);
    const std::size_t seen = end == std::string_view::npos ? received.size() : end + 1;
    if (seen > most_bytes_) return lines_ == 0 ? Verdict::target_too_long : Verdict::too_large;
    scanned_ = seen;
    if (end == std::string_view::npos) return Verdict::more;
    if (end == line_begin_ || received[end - 1] != '\r') return Verdict::bare_line_end;
    const std::string_view line = received.substr(line_begin_, end - 1 - line_begin_);
    if (line.find('\r') != std::string_view::npos) return Verdict::bare_line_end;
    line_begin_ = seen;
    if (line.empty()) return Verdict::complete;
    if (lines_ > 0 && (line.front() == ' ' || line.front() == '\t')) return Verdict::folded;
    if (lines_++ > most_lines_) return Verdict::too_large;
  }
}

class RequestParser::Impl : public http::basic_parser<true> {
 public:
  explicit Impl(const HttpLimits& limits) : limits_(limits) {
    body_limit(boost::none);  // count_body() has ours: it must not end the request
    header_limit(static_cast<std::uint32_t>(limits.header_bytes));
  }

  HttpRequest request;
  bool too_large = false;
  bool too_many_parts = false;
  const char* trailer = nullptr;  // where the trailer began, in the bytes that ended the request

  void count_parts() {
    const std::string* type = request.header("Content-Type");
    if (type) parts_.emplace(part_delimiter(*type));
  }

  // The library would unfold a line of a trailer, and has no limit of its own.
  Progress check_trailer(std::string_view text, Progress sound) const {
    if (text.size() > limits_.trailer_bytes) return Progress::trailer_too_large;
    const bool is_folded = text.find("\n ") != std::string_view::npos || text.find("\n\t") != std::string_view::npos;
    return is_folded ? Progress::bad : sound;
  }

 private:
  using Error = beast::error_code;

  void count_body(std::uint64_t more, Error& ec) {
    request.body_length += more;
    if (request.body_length <= limits_.body_bytes) return;
    too_large = request.body_too_large = true;
    request.body = Body();
    ec = http::error::body_limit;
  }

  void on_request_impl(http::verb /*method*/, beast::string_view method, beast::string_view target, int version,
                       Error& /*ec*/) override {
    request.method = to_string(method);
    request.target = to_string(target);
    request.minor_version = version % 10;
  }

  void on_response_impl(int /*code*/, beast::string_view /*reason*/, int /*version*/, Error& /*ec*/) override {}

  void on_field_impl(http::field /*field*/, beast::string_view name, beast::string_view value, Error& /*ec*/) override {
    // A trailer is read and dropped: nothing that decided anything about the request may come after it.
    if (in_trailer_) {
      if (!trailer) trailer = name.data();
      return;
    }
    if (!limits_.takes_underscores && name.find('_') != name.npos) return;
    request.headers.push_back({to_string(name), to_string(value)});
  }

  void on_header_impl(Error& /*ec*/) override { in_trailer_ = true; }

  void on_body_init_impl(const boost::optional<std::uint64_t>& length, Error& ec) override {
    if (!length) return;
    count_body(*length, ec);
    request.body.expect(*length);
  }

  std::size_t on_body_impl(beast::string_view bytes, Error& ec) override {
    take(to_view(bytes), ec);
    return bytes.size();
  }

  void on_chunk_header_impl(std::uint64_t size, beast::string_view extensions, Error& ec) override {
    if (extensions.size() > limits_.chunk_extension_bytes)
      ec = http::error::bad_chunk_extension;
    else if (size > limits_.body_bytes)  // first, for the sum must not wrap
      count_body(limits_.body_bytes + 1, ec);
    else
      count_body(size, ec);
  }

  std::size_t on_chunk_body_impl(std::uint64_t /*remain*/, beast::string_view bytes, Error& ec) override {
    take(to_view(bytes), ec);
    return bytes.size();
  }

  // A delimiter comes before each part and after the last one.
  void take(std::string_view bytes, Error& ec) {
    if (parts_) parts_->add(bytes);
    if (parts_ && parts_->count() > limits_.upload_parts + 1) {
      too_many_parts = true;
      request.body = Body();
      ec = http::error::body_limit;
      return;
    }
    request.body.append(bytes);
  }

  void on_finish_impl(Error& /*ec*/) override {}

  const HttpLimits& limits_;
  std::optional<PartCounter> parts_;
  bool in_trailer_ = false;
};

RequestParser::RequestParser(const HttpLimits& limits) : impl_(std::make_unique<Impl>(limits)) {}

RequestParser::~RequestParser() = default;

int RequestParser::parse_head(std::string_view head) {
  beast::error_code ec;
  impl_->put(boost::asio::buffer(head.data(), head.size()), ec);
  if (ec == http::error::bad_version && names_a_version(head)) return status::kVersionNotSupported;
  if (ec || !impl_->is_header_done()) return status::kBadRequest;
  HttpRequest& request = impl_->request;
  if (const int status = check_framing(request); status != status::kOk) return status;
  Target target = parse_target(request.target);
  request.path = std::move(target.path);
  request.query = std::move(target.query);
  if (!target.authority.empty()) set_host(request, std::move(target.authority));
  impl_->eager(true);
  impl_->count_parts();
  return target.status;
}

bool RequestParser::needs_body() const { return !impl_->is_done(); }

RequestParser::Progress RequestParser::parse_body(std::string_view received, std::size_t& used) {
  used = 0;
  while (!impl_->is_done()) {
    beast::error_code ec;
    used += impl_->put(boost::asio::buffer(received.data() + used, received.size() - used), ec);
    if (impl_->too_large) return Progress::too_large;
    if (impl_->too_many_parts) return Progress::too_many_parts;
    if (ec == http::error::need_more)
      return impl_->check_trailer(unended_trailer(received.substr(used)), Progress::more);
    if (ec) return Progress::bad;
    if (impl_->trailer) {
      const auto before = static_cast<std::size_t>(impl_->trailer - received.data());
      return impl_->check_trailer(received.substr(before, used - before), Progress::done);
    }
    if (used == received.size() && !impl_->is_done()) return Progress::more;
  }
  return Progress::done;
}

HttpRequest& RequestParser::request() { return impl_->request; }

const HttpRequest& RequestParser::request() const { return impl_->request; }

}  // namespace zelto
