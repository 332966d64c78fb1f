#include "http/answer_sender.h"

#include <algorithm>
#include <new>

namespace zelto {

void AnswerSender::send(const std::shared_ptr<void>& owner) {
  if (active_ || !socket_.is_open() || !queue_.is_sending()) return;
  active_ = true;
  watched_ = false;
  step(owner);
}

void AnswerSender::step(const std::shared_ptr<void>& owner) {
  if (queue_.send() == AnswerQueue::Progress::waits) {
    try {
      if (!watched_) watch(owner);
      socket_.async_wait(Socket::wait_write, [this, owner](const boost::system::error_code&) {
        if (socket_.is_open()) step(owner);
      });
      return;
    } catch (const std::bad_alloc&) {
      queue_.fail();
    }
  }
  active_ = false;
  deadline_.arm(HttpLimits::Duration::zero(), owner);
  on_end_();
}

void AnswerSender::watch(const std::shared_ptr<void>& owner) {
  watched_ = true;
  delivered_ = queue_.delivered();
  span_began_ = std::chrono::steady_clock::now();
  deadline_.arm(limits_.send_timeout, owner);
}

// A socket that takes no more may wait for a third of its buffer, and its client may still be fast enough: what counts
// is what has arrived there.
void AnswerSender::on_timeout(const std::shared_ptr<void>& owner) {
  const std::chrono::duration<double> span = std::chrono::steady_clock::now() - span_began_;
  const double least = std::max(1.0, static_cast<double>(limits_.send_rate) * span.count());
  if (static_cast<double>(queue_.delivered() - delivered_) >= least) return watch(owner);
  queue_.fail();
  boost::system::error_code ignored;
  socket_.cancel(ignored);  // what waits for the client goes on, and finds that out
}

}  // namespace zelto
