#include "upload/multipart_parser.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

void skip_blanks(std::string_view& text) { text.remove_prefix(std::min(text.find_first_not_of(' '), text.size())); }

// What stands before the next `mark`, and skips that; all of the text when there is none.
std::string_view take_until(std::string_view& text, char mark) {
  const std::size_t end = text.find(mark);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return taken;
}

std::string_view unquoted(std::string_view text) {
  const bool is_quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

void read_params(std::string_view text, CMultipartHeader& header) {
  while (text.find('=') != std::string_view::npos) {
    const std::string_view key = take_until(text, '=');
    const std::string_view value = take_until(text, ';');
    skip_blanks(text);
    const auto stored = header.params.insert_or_assign(std::string(key), std::string(unquoted(value)));
    header.stored.push_back(&stored.first->first);
  }
}

}  // namespace

CMultipartParser::CMultipartParser(const char* body, std::size_t length, const char* boundary)
    : body_(body ? body : ""), length_(length), boundary_(boundary), boundary_length_(std::strlen(boundary)) {}

// Every byte is looked at, as a delimiter may begin anywhere; memchr does so many at a time.
const char* CMultipartParser::find_boundary() {
  const char* const end = body_ + length_;
  const char* at = body_ + position_;
  if (boundary_length_ == 0) return at < end ? at : nullptr;  // found wherever there is a byte
  while (static_cast<std::size_t>(end - at) >= boundary_length_) {
    const char* const from = at;
    at = static_cast<const char*>(std::memchr(at, boundary_[0], static_cast<std::size_t>(end - at)));
    work_ += static_cast<std::size_t>((at ? at : end) - from);
    if (!at || static_cast<std::size_t>(end - at) < boundary_length_) return nullptr;
    work_ += boundary_length_;
    if (std::memcmp(at, boundary_, boundary_length_) == 0) return at;
    ++at;
  }
  return nullptr;
}

HRESULT CMultipartParser::MoveNextBoundary(std::size_t& boundaryStart, bool& isLast) {
  const char* found = find_boundary();
  if (!found) {
    position_ = length_;
    return E_FAIL;
  }
  boundaryStart = static_cast<std::size_t>(found - body_);
  position_ = boundaryStart + boundary_length_;
  if (length_ - position_ < 2) return E_FAIL;
  const std::string_view next(body_ + position_, 2);
  if (next != "\r\n" && next != "--") return E_FAIL;
  position_ += 2;
  isLast = next == "--";
  return S_OK;
}

// The line at hand, without its end. A NUL ends the search as well as the body does.
bool CMultipartParser::read_line(std::string_view* line) {
  const std::string_view rest(body_ + position_, length_ - position_);
  const std::size_t size = rest.find("\r\n");
  work_ += std::min(size, rest.size());
  if (size == std::string_view::npos) return false;
  *line = rest.substr(0, size);
  work_ += size;
  return line->find('\0') == std::string_view::npos;
}

HRESULT CMultipartParser::GetHeader(CMultipartHeader& header) {
  std::string_view line;
  if (!read_line(&line)) return E_FAIL;
  position_ += line.size() + 2;
  header.has_colon = false;
  header.stored.clear();
  if (line.empty()) return S_FALSE;
  if (line.find(':') == std::string_view::npos) return S_OK;
  header.has_colon = true;
  header.name = take_until(line, ':');
  skip_blanks(line);
  header.value = take_until(line, ';');
  skip_blanks(line);
  read_params(line, header);
  return S_OK;
}
