#include "http/access_log.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <string_view>

#include "text/characters.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

enum class Text { clients, pages };

bool is_plain(char c) { return c >= ' ' && c < 0x7F && c != '"' && c != '\\'; }

// A page may write in any language; what a client sends is readable only as far as it is ASCII.
void append_escaped(std::string& out, std::string_view text, Text whose = Text::clients) {
  if (text.empty()) out += '-';
  const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(text, is_plain) - text.begin());
  out += text.substr(0, plain);
  text.remove_prefix(plain);
  std::size_t control = 0;  // bytes of one that are still to come
  for (; !text.empty(); text.remove_prefix(1)) {
    const char c = text.front();
    if (control == 0) control = control_length(text);
    const bool is_foreign = static_cast<unsigned char>(c) > 0x7F && whose == Text::clients;
    if (control > 0 || is_foreign || c == '"' || c == '\\')
      append_hex(out += "\\x", c);
    else
      out += c;
    if (control > 0) --control;
  }
}

// The text changes once a second.
const std::string& text_of(std::time_t when) {
  thread_local std::time_t written = 0;
  thread_local std::string text;
  if (when != written || text.empty()) {
    text = fmt::format("{:%d/%b/%Y:%H:%M:%S} +0000", fmt::gmtime(when));
    written = when;
  }
  return text;
}

}  // namespace

void append_combined_line(std::string& out, const AccessRecord& record) {
  append_escaped(out, record.remote_address);
  out.append(" - - [").append(text_of(std::chrono::system_clock::to_time_t(record.received))).append("] \"");
  append_escaped(out, record.request_line);
  fmt::format_to(std::back_inserter(out), "\" {} {} \"", record.status, record.body_bytes);
  append_escaped(out, record.referer);
  out += "\" \"";
  append_escaped(out, record.user_agent);
  fmt::format_to(std::back_inserter(out), "\" {:.3f}", static_cast<double>(record.taken.count()) / 1e6);
  if (record.note.empty()) return;
  out += ' ';
  append_escaped(out, record.note, Text::pages);
}

}  // namespace zelto
