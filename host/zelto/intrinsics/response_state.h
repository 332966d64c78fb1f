// The response of a page while the page runs: head, cookies and the buffered body.
#pragma once

#include <korlib/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/growing_buffer.h"
#include "http/message.h"
#include "intrinsics/cookies.h"
#include "text/charset.h"
#include "text/locale.h"

namespace zelto {

// Bytes on their way out; a page appends to them character by character.
class ByteBuffer {
 public:
  std::string_view view() const { return bytes_.view(); }
  std::size_t size() const { return bytes_.size(); }
  void clear() { bytes_.set_size(0); }
  void append(std::string_view bytes);
  void append_utf8(std::wstring_view text);
  // The ASCII that the text begins with; how long that is.
  std::size_t append_ascii(std::u16string_view text);
  // One byte where there is room already; false, and nothing appended, where there is none.
  bool put(char byte) {
    const std::size_t at = bytes_.size();  // a char may alias any member: not read again once the byte is written
    if (at >= bytes_.capacity()) return false;
    bytes_.data()[at] = byte;
    bytes_.set_size(at + 1);
    return true;
  }

 private:
  char* make_room(std::size_t bytes);

  base::GrowingBuffer bytes_;
};

// What a page may say of its response, as every page begins.
struct ResponseFields {
  int status = 200;
  std::string reason = "OK";
  LONG code_page = kUtf8CodePage;
  LONG lcid = kNeutralLocale;
  std::string content_type = "text/html";
  std::string charset;  // empty: the code page's, for text types
  std::string cache_control = "private";
  std::optional<double> expires;          // a DATE
  std::optional<double> expires_minutes;  // as the page set it, when it gave minutes
  std::vector<Header> headers;            // added by the page
  std::vector<SetCookie> cookies;
};

// Belongs to the request's thread. Objects may hold it beyond the request; it then has no sink and
// everything written to it is dropped.
class ResponseState : public ResponseFields {
 public:
  // A body beyond this is sent on as it comes.
  static constexpr std::size_t kBufferLimit = std::size_t{4} * 1024 * 1024;
  // Of what the page adds to its line of the log; what is more is left out.
  static constexpr std::size_t kLogNoteLimit = std::size_t{8} * 1024;

  explicit ResponseState(ResponseSink& sink) : sink_(&sink) {}

  void write(std::wstring_view text);  // in the code page
  void write(std::u16string_view text);
  // A single character of ASCII into a buffer that has room, as templates write their literal text; false, and nothing
  // written, for any other text and in every other state.
  bool put(std::wstring_view text) {
    constexpr std::uint32_t kAsciiEnd = 0x80;
    const bool is_ascii = text.size() == 1 && static_cast<std::uint32_t>(text[0]) < kAsciiEnd;
    const bool is_kept = sink_ && buffered && !head_sent_ && code_page == kUtf8CodePage;
    return is_ascii && is_kept && buffer_.size() < kBufferLimit && buffer_.put(static_cast<char>(text[0]));
  }
  void write_bytes(std::string_view bytes);
  void flush();  // sends the head, once, and what is buffered
  void clear() { buffer_.clear(); }
  // The end of the page: sends what is left, with its length when nothing was sent before.
  void finish() { end(&ResponseSink::finish); }
  // The end of a page that failed after its head was sent: sends what is left, and the client sees that it is not all.
  void break_off() { end(&ResponseSink::break_off); }
  // Forgets the body and what the page said of it, as for an error page. False when the head has gone out already.
  bool reset();
  void detach() { sink_ = nullptr; }
  void append_to_log(std::string_view utf8);
  const std::string& log_note() const { return log_note_; }

  bool head_sent() const { return head_sent_; }
  bool connected() const { return sink_ && sink_->connected(); }
  // What the page writes reaches nobody: its client has gone.
  bool is_lost() const { return head_sent_ && sink_ && sink_->failed(); }

  bool buffered = true;
  std::string session_cookie;  // a whole Set-Cookie value, or empty

  // Once the head has gone out, so that it cannot be changed any more: fails with a message that begins with the
  // member.
  HRESULT check_head(std::wstring_view source, std::wstring_view member = {}) const;
  // "404 Not Found"; false for a text that is not a status line.
  bool set_status(std::string_view line);
  void set_cookie(SetCookie cookie);  // in place of the one of its name, or after the others

 private:
  void sent_on();
  // The head, when it has not been sent, for a body of that length; and what is buffered.
  void send(std::uint64_t length);
  void end(void (ResponseSink::*how)());
  ResponseHead head() const;

  ResponseSink* sink_;
  ByteBuffer buffer_;
  std::string log_note_;
  bool is_log_note_full_ = false;
  bool head_sent_ = false;
};

}  // namespace zelto
