// Whether a client has sent more while its last request was being answered.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "http/mailbox.h"
#include "http/peer.h"

namespace zelto {

// Spares the loop being woken twice for each request, by the worker that has answered the one and by the client that
// sends the next: the client alone wakes it, and it then finds what the worker has left in its mailbox.
// Belongs to the loop of its connection, but for leave().
class ClientWatch {
 public:
  // `on_next` is called on the loop.
  ClientWatch(Socket& socket, Mailbox& mailbox, std::function<void()> on_next)
      : socket_(socket), mailbox_(mailbox), on_next_(std::move(on_next)) {}

  // Before a worker gets the request; `has_sent_more` when some of the next one has been read already. `owner` holds
  // this object, and is kept alive until the client sends something or is gone.
  void begin(const std::shared_ptr<void>& owner, bool has_sent_more);
  // The same of a client that is not watched: what it does meanwhile nobody hears.
  void forgo() { has_come_ = true; }
  // Whether the client may be gone; false is certain but for what the loop is just about to hear. Of any thread.
  bool may_have_gone() const { return has_come_; }
  // By the worker, of an answer that the client has been sent to its end.
  void leave(Letter letter) { mailbox_.leave(std::move(letter), has_come_); }
  // At what has been left.
  void look() { mailbox_.open_all(); }
  // The answer is over. True when `on_next` will be called, once, as soon as there is something to read; false when
  // there may be already.
  bool await();

 private:
  Socket& socket_;
  Mailbox& mailbox_;
  const std::function<void()> on_next_;
  bool is_watching_ = false;
  bool is_awaited_ = false;
  std::atomic<bool> has_come_ = false;
};

}  // namespace zelto
