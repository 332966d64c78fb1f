#include "http/access_log.h"

#include <fmt/chrono.h>

#include <string_view>

#include "text/characters.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

enum class Text { clients, pages };

// A page may write in any language; what a client sends is readable only as far as it is ASCII.
std::string escaped(std::string_view text, Text whose = Text::clients) {
  std::string out;
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
  return out.empty() ? "-" : out;
}

}  // namespace

std::string combined_line(const AccessRecord& record) {
  const std::tm received = fmt::gmtime(std::chrono::system_clock::to_time_t(record.received));
  std::string line = fmt::format("{} - - [{:%d/%b/%Y:%H:%M:%S} +0000] \"{}\" {} {} \"{}\" \"{}\" {:.3f}",
                                 escaped(record.remote_address), received, escaped(record.request_line), record.status,
                                 record.body_bytes, escaped(record.referer), escaped(record.user_agent),
                                 static_cast<double>(record.taken.count()) / 1e6);
  if (!record.note.empty()) line += ' ' + escaped(record.note, Text::pages);
  return line;
}

}  // namespace zelto
