#include "http/head_scanner.h"

namespace zelto {

HeadScanner::Verdict HeadScanner::scan(std::string_view received) {
  for (;;) {
    const auto end = received.find('\n', scanned_);
    const std::size_t seen = end == std::string_view::npos ? received.size() : end + 1;
    if (seen > most_bytes_) return lines_ == 0 ? Verdict::kTargetTooLong : Verdict::kTooLarge;
    scanned_ = seen;
    if (end == std::string_view::npos) return Verdict::kMore;
    if (end == line_begin_ || received[end - 1] != '\r') return Verdict::kBareLineFeed;
    const std::string_view line = received.substr(line_begin_, end - 1 - line_begin_);
    line_begin_ = seen;
    if (line.empty()) return Verdict::kComplete;
    if (lines_ > 0 && (line.front() == ' ' || line.front() == '\t')) return Verdict::kFolded;
    if (lines_++ > most_lines_) return Verdict::kTooLarge;
  }
}

}  // namespace zelto
