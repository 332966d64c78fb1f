#include "intrinsics/response_state.h"

#include <korlib/text.h>
#include <korlib_host/errors.h>
#include <korlib_host/unicode.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/letter_case.h"
#include "script/thread_memory.h"
#include "text/characters.h"
#include "text/charset.h"
#include "text/http_date.h"
#include "text/http_grammar.h"
#include "text/numbers.h"

namespace zelto {

char* ByteBuffer::make_room(std::size_t bytes) {
  const std::size_t size = bytes_.size();
  const std::size_t capacity = bytes_.capacity();
  if (capacity - size < bytes) bytes_.grow(std::max({size + bytes, capacity * 2, std::size_t{4096}}));
  return bytes_.data() + size;
}

void ByteBuffer::append(std::string_view bytes) {
  if (bytes.empty()) return;
  std::memcpy(make_room(bytes.size()), bytes.data(), bytes.size());
  bytes_.set_size(bytes_.size() + bytes.size());
}

void ByteBuffer::append_utf8(std::wstring_view text) {
  // A character takes four bytes at most, so one pass is enough.
  const std::size_t room = text.size() * 4;
  char* const at = make_room(room);
  bytes_.set_size(bytes_.size() + utf32_utf8(text.data(), text.size(), at, room));
}

std::size_t ByteBuffer::append_ascii(std::u16string_view text) {
  // In blocks, whose loops are vectorised.
  constexpr std::size_t kBlock = 64;
  char* at = make_room(text.size());
  std::size_t done = 0;
  while (done < text.size()) {
    const std::u16string_view block = text.substr(done, kBlock);
    char16_t seen = 0;
    for (const char16_t unit : block) seen |= unit;
    if (seen >= 0x80) break;
    for (const char16_t unit : block) *at++ = static_cast<char>(unit);
    done += block.size();
  }
  bytes_.set_size(bytes_.size() + done);
  return done;
}

// Nearly all of most pages is ASCII, and the same in every code page.
void ResponseState::write(std::u16string_view text) {
  constexpr std::size_t kPiece = std::size_t{64} * 1024;
  constexpr std::size_t kOther = 256;
  if (!sink_) return;
  do {
    const std::u16string_view piece = text.substr(0, kPiece);
    std::size_t done = code_page == kUtf8CodePage ? buffer_.append_ascii(piece) : 0;
    if (done < piece.size()) {
      std::size_t other = std::min(kOther, piece.size() - done);
      if (korlib::is_surrogate_pair(text, done + other - 1)) ++other;
      std::wstring wide;
      korlib::append_utf16(wide, text.substr(done, other));
      done += other;
      write(std::wstring_view(wide));
    } else {
      sent_on();
    }
    text.remove_prefix(done);
  } while (!text.empty());
}

void ResponseState::write(std::wstring_view text) {
  if (!sink_) return;
  constexpr std::size_t kPiece = std::size_t{64} * 1024;
  if (code_page != kUtf8CodePage) {
    buffer_.append(encode(code_page, text));
    return sent_on();
  }
  do {
    buffer_.append_utf8(text.substr(0, kPiece));
    text.remove_prefix(std::min(kPiece, text.size()));
    sent_on();
  } while (!text.empty());
}

void ResponseState::write_bytes(std::string_view bytes) {
  if (!sink_) return;
  buffer_.append(bytes);
  sent_on();
}

void ResponseState::sent_on() {
  if (!buffered || buffer_.size() > kBufferLimit) flush();
}

// What waits for the client is the server's, within limits of its own, and freed by its threads.
void ResponseState::send(std::uint64_t length) {
  const TakenForOthers taken;
  if (!head_sent_) sink_->start(head(), length);
  head_sent_ = true;
  if (buffer_.size() > 0) sink_->write(buffer_.view());
  buffer_.clear();
}

void ResponseState::flush() {
  if (sink_) send(ResponseSink::kUnknownLength);
}

void ResponseState::end(void (ResponseSink::*how)()) {
  if (!sink_) return;
  send(buffer_.size());
  const TakenForOthers taken;
  if (!log_note_.empty()) sink_->append_to_log(log_note_);
  (std::exchange(sink_, nullptr)->*how)();
}

void ResponseState::append_to_log(std::string_view text) {
  if (is_log_note_full_) return;
  const std::string_view kept = beginning_of(text, kLogNoteLimit - log_note_.size());
  log_note_ += kept;
  is_log_note_full_ = kept.size() < text.size();
}

bool ResponseState::reset() {
  if (head_sent_) return false;
  buffer_.clear();
  static_cast<ResponseFields&>(*this) = {};
  return true;
}

HRESULT ResponseState::check_head(std::wstring_view source, std::wstring_view member) const {
  if (!head_sent_) return S_OK;
  const std::wstring begin = member.empty() ? L"The" : std::wstring(member) + L": the";
  return korlib::raise(E_FAIL, source, begin + L" response's head has been sent already.");
}

ResponseHead ResponseState::head() const {
  ResponseHead head{status, reason, {}};
  if (!content_type.empty()) {
    const std::string type = base::ascii_lowered(content_type);
    const bool is_text = type.starts_with("text/");
    std::string set = !charset.empty() ? charset : is_text ? charset_of(code_page).value_or("utf-8") : "";
    if (type.find("charset=") != std::string::npos) set.clear();  // the page has named it
    head.headers.push_back({"Content-Type", content_type + (set.empty() ? "" : "; charset=" + set)});
  }
  if (!cache_control.empty()) head.headers.push_back({"Cache-Control", cache_control});
  if (expires) head.headers.push_back({"Expires", http_date_of(*expires)});
  for (const SetCookie& cookie : cookies) head.headers.push_back({"Set-Cookie", cookie.header()});
  if (!session_cookie.empty()) head.headers.push_back({"Set-Cookie", session_cookie});
  head.headers.insert(head.headers.end(), headers.begin(), headers.end());
  return head;
}

bool ResponseState::set_status(std::string_view line) {
  const std::optional<int> number = parse_number<int>(line.substr(0, 3));
  if (!number || *number < 200 || *number > 599 || !is_field_value(line)) return false;
  if (line.size() > 3 && line[3] != ' ') return false;
  reason = line.size() > 4 ? line.substr(4) : "";  // which can fail
  status = *number;
  return true;
}

void ResponseState::set_cookie(SetCookie cookie) {
  if (SetCookie* found = find_named(cookies, cookie.name)) {
    *found = std::move(cookie);
  } else {
    cookies.push_back(std::move(cookie));
  }
}

}  // namespace zelto
