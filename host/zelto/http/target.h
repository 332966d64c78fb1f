// A request's target, split and checked: the path that a site is asked for, and the query.
#pragma once

#include <string>
#include <string_view>

namespace zelto {

struct Target {
  int status = 200;       // or the status to refuse the request with: 400, or 404 for names that no file has
  std::string authority;  // of the absolute form, "host:port", else empty
  std::string path;       // decoded, normalised, beginning with '/'
  std::string query;
};

// Accepts the origin form ("/a?b") and the absolute form ("http://host/a?b"). The path is decoded once;
// after that a NUL or other control character, a backslash, an encoded slash, text that is not UTF-8 and a
// ".." that would leave the root are refused. Empty and "." segments go; a final slash stays.
Target parse_target(std::string_view target);

// Whether the text can stand in a Host header: a name or an address, then perhaps a colon and a port. An
// empty one is allowed there.
bool is_host(std::string_view text);

// The path with everything but unreserved characters and '/' percent-encoded.
std::string encode_path(std::string_view path);

}  // namespace zelto
