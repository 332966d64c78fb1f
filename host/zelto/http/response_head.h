// Writes the head of a response.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "http/message.h"

namespace zelto {

enum class Framing { length, chunked, until_close, none };

// Headers as ResponseHead::lines takes them. Those that write_response_head() drops are not among them, and what it
// says of guessing types is.
std::string write_header_lines(std::span<const Header> headers);

// The head as sent, with its empty line. The connection's own headers are written by it alone: those of
// the same name in `head` are dropped, and so is every header with a CR, LF or NUL in it.
std::string write_response_head(const ResponseHead& head, Framing framing, std::uint64_t length, bool keep_alive);

}  // namespace zelto
