#include "http/access_log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "text/characters.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

enum class Text { kClients, kPages };

// A page may write in any language; what a client sends is readable only as far as it is ASCII.
std::string escaped(std::string_view text, Text whose = Text::kClients) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (is_control(c) || (byte > 0x7F && whose == Text::kClients) || c == '"' || c == '\\')
      append_hex(out += "\\x", c);
    else
      out += c;
  }
  return out.empty() ? "-" : out;
}

std::string log_date(std::chrono::system_clock::time_point when) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%d/%b/%Y:%H:%M:%S +0000", &parts);
  return {text.data(), length};
}

std::string seconds_text(std::chrono::microseconds taken) {
  std::array<char, 32> text{};
  const int length = std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(taken.count()) / 1e6);
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

}  // namespace

std::string combined_line(const AccessRecord& record) {
  std::string line = escaped(record.remote_address);
  line += " - - [" + log_date(record.received) + "] \"" + escaped(record.request_line) + "\" ";
  line += std::to_string(record.status) + ' ' + std::to_string(record.body_bytes);
  line += " \"" + escaped(record.referer) + "\" \"" + escaped(record.user_agent) + "\" " + seconds_text(record.taken);
  if (!record.note.empty()) line += ' ' + escaped(record.note, Text::kPages);
  return line;
}

}  // namespace zelto
