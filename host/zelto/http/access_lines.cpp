#include "http/access_lines.h"

#include <chrono>
#include <climits>
#include <memory>

#include "http/deadline.h"

namespace zelto {

void AccessLines::add(const AccessRecord& record) {
  const std::size_t before = lines_.size();
  try {
    append_combined_line(lines_, record);
    lines_ += '\n';
  } catch (...) {
    lines_.resize(before);
    throw;
  }
  ++count_;
  if (lines_.size() > PIPE_BUF && before > 0) hand_on(before, count_ - 1);
  if (!is_waiting_) wait();
}

// The timer lives as long as its handler: the loop, with which these go, may be gone before this object.
void AccessLines::wait() {
  constexpr std::chrono::milliseconds kSoon(10);
  const auto timer = std::make_shared<Timer>(loop_, kSoon);
  timer->async_wait([this, timer](const boost::system::error_code&) {
    is_waiting_ = false;
    flush();
  });
  is_waiting_ = true;
}

void AccessLines::flush() {
  if (count_ > 0) hand_on(lines_.size(), count_);
}

void AccessLines::hand_on(std::size_t bytes, std::size_t count) {
  take_(std::string_view(lines_).substr(0, bytes), count);
  lines_.erase(0, bytes);
  count_ -= count;
}

}  // namespace zelto
