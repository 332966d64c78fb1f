#include "http/client_watch.h"

#include <boost/system/error_code.hpp>
#include <utility>

namespace zelto {

void ClientWatch::begin(const std::shared_ptr<void>& owner, bool has_sent_more) {
  has_come_ = has_sent_more;
  if (has_sent_more) return;  // what is left rings
  mailbox_.look_soon();
  if (is_watching_) return;
  socket_.async_wait(Socket::wait_read, [this, owner](const boost::system::error_code&) {
    is_watching_ = false;
    has_come_ = true;  // before the letters are opened: what is left after that rings
    mailbox_.open_all();
    if (std::exchange(is_awaited_, false)) on_next_();
  });
  is_watching_ = true;
}

bool ClientWatch::await() { return is_awaited_ = is_watching_; }

}  // namespace zelto
