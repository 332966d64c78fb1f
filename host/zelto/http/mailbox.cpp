#include "http/mailbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <cerrno>
#include <system_error>
#include <utility>

#include "base/file_descriptor.h"

namespace zelto {

namespace {

base::FileDescriptor make_bell() {
  base::FileDescriptor bell(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!bell) throw std::system_error(errno, std::generic_category(), "making an event descriptor");
  return bell;
}

}  // namespace

Mailbox::Mailbox(boost::asio::io_context& io) : bell_(io.get_executor()), timer_(io.get_executor()) {
  base::FileDescriptor bell = make_bell();
  bell_.assign(bell.get());
  bell.release();
}

// What tells whether the loop looks is asked under the lock that it takes to look.
void Mailbox::put(Letter letter, const std::atomic<bool>* is_urgent) {
  {
    const std::lock_guard lock(lock_);
    letters_.push_back(std::move(letter));
    if (is_urgent && !*is_urgent && looks_soon_) return;
    if (std::exchange(is_ringing_, true)) return;
  }
  // It fails only when it has rung 2^64 times and nobody came.
  const std::uint64_t once = 1;
  [[maybe_unused]] const ssize_t written = ::write(bell_.native_handle(), &once, sizeof once);
}

void Mailbox::watch() {
  if (is_watched_) return;
  bell_.async_read_some(boost::asio::buffer(&rung_, sizeof rung_),
                        [this](const boost::system::error_code& error, std::size_t) {
                          is_watched_ = false;
                          if (error) return;
                          open_all();
                          watch();
                        });
  is_watched_ = true;
}

void Mailbox::open_all() {
  {
    const std::lock_guard lock(lock_);
    opened_.swap(letters_);
    is_ringing_ = false;
  }
  for (const Letter& letter : opened_) letter.open(letter.owner.get());
  opened_.clear();
}

void Mailbox::look_soon() {
  constexpr std::chrono::milliseconds kSoon(2);
  if (looks_soon_) return;
  timer_.expires_after(kSoon);
  timer_.async_wait([this](const boost::system::error_code& error) {
    looks_soon_ = false;
    if (!error) open_all();
  });
  looks_soon_ = true;
}

}  // namespace zelto
