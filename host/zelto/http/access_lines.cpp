#include "http/access_lines.h"

#include <boost/asio/post.hpp>
#include <climits>

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
  if (is_posted_) return;
  boost::asio::post(loop_, [this] {
    is_posted_ = false;
    flush();
  });
  is_posted_ = true;
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
