#include "http/framing.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "http/status.h"
#include "http/target.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

std::ptrdiff_t count_of(const HttpRequest& request, std::string_view name) {
  return std::ranges::count_if(request.headers, [&](const Header& h) { return base::equal_ascii(h.name, name); });
}

// True when an element of any header of that name is `wanted`.
bool has_element(const HttpRequest& request, std::string_view name, std::string_view wanted) {
  bool found = false;
  for (const Header& header : request.headers)
    if (base::equal_ascii(header.name, name))
      for_each_element(header.value, [&](std::string_view element) { found |= base::equal_ascii(element, wanted); });
  return found;
}

int check_transfer_coding(const HttpRequest& request) {
  int chunked = 0;
  int others = 0;
  int unknown = 0;
  bool present = false;
  for (const Header& header : request.headers) {
    if (!base::equal_ascii(header.name, "Transfer-Encoding")) continue;
    present = true;
    for_each_element(header.value, [&](std::string_view coding) {
      if (base::equal_ascii(coding, "chunked"))
        ++chunked;
      else if (base::equal_ascii(coding, "identity"))
        ++others;
      else
        ++unknown;
    });
  }
  if (!present) return status::kOk;
  if (request.minor_version == 0 || request.header("Content-Length")) return status::kBadRequest;
  if (unknown > 0) return status::kNotImplemented;
  return chunked == 1 && others == 0 ? status::kOk : status::kBadRequest;
}

int check_length(const HttpRequest& request) {
  if (count_of(request, "Content-Length") > 1) return status::kBadRequest;
  const std::string* length = request.header("Content-Length");
  return !length || (!length->empty() && std::ranges::all_of(*length, base::is_digit<char>)) ? status::kOk
                                                                                             : status::kBadRequest;
}

int check_host(const HttpRequest& request) {
  const auto hosts = count_of(request, "Host");
  if (hosts > 1 || (hosts == 0 && request.minor_version > 0)) return status::kBadRequest;
  if (hosts == 0) return status::kOk;
  return is_host(*request.header("Host")) ? status::kOk : status::kBadRequest;
}

int check_expectation(const HttpRequest& request) {
  if (request.minor_version == 0) return status::kOk;  // such a client cannot expect anything
  const auto is_unknown = [](const Header& header) {
    return base::equal_ascii(header.name, "Expect") && !base::equal_ascii(header.value, "100-continue");
  };
  return std::ranges::none_of(request.headers, is_unknown) ? status::kOk : status::kExpectationFailed;
}

}  // namespace

int check_framing(const HttpRequest& request) {
  constexpr std::array<std::string_view, 7> kMethods = {"GET", "HEAD", "POST", "PUT", "DELETE", "PATCH", "OPTIONS"};
  for (const auto check : {check_transfer_coding, check_length, check_host})
    if (const int status = check(request); status != status::kOk) return status;
  if (std::ranges::find(kMethods, request.method) == kMethods.end()) return status::kNotImplemented;
  return check_expectation(request);
}

bool wants_keep_alive(const HttpRequest& request) {
  if (has_element(request, "Connection", "close")) return false;
  return request.minor_version > 0 || has_element(request, "Connection", "keep-alive");
}

bool expects_continue(const HttpRequest& request) {
  const std::string* expectation = request.header("Expect");
  return expectation && request.minor_version > 0 && base::equal_ascii(*expectation, "100-continue");
}

}  // namespace zelto
