// One user's session: its values, and the lock that lets one request at a time use them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "intrinsics/variant_store.h"
#include "text/charset.h"
#include "text/locale.h"

namespace zelto {

// First come, first served, so that no request of a busy session starves. Small while nobody waits: a site has as many
// as sessions.
class FifoLock {
 public:
  // False when the turn did not come in time.
  bool lock(std::chrono::milliseconds patience);
  bool try_lock();
  void unlock();
  std::size_t waiting() const;

 private:
  struct Queue {
    std::condition_variable turn_came;
    std::vector<std::uint64_t> tickets;  // in order
    std::uint64_t next_ticket = 0;
  };
  bool is_waited_for() const { return queue_ && !queue_->tickets.empty(); }

  mutable std::mutex mutex_;
  std::unique_ptr<Queue> queue_;  // while somebody waits
  bool is_held_ = false;
};

// The client of the request that has a session.
class SessionClient {
 public:
  // Has the client come back to the session, or come back with another identifier.
  virtual HRESULT keep() = 0;
  virtual HRESULT renew() = 0;

 protected:
  ~SessionClient() = default;
};

// Objects in a session may count their references plainly, so every touch, the last release included,
// happens under `lock`: by the one request that holds it, or by whoever ends the session.
class SessionState final : public VariantStore {
 public:
  using Clock = std::chrono::steady_clock;

  explicit SessionState(std::string session_id) : id(std::move(session_id)) {}

  HRESULT get(std::wstring_view name, VARIANT* value) override;
  HRESULT put(std::wstring_view name, const VARIANT& value) override;
  HRESULT remove(std::wstring_view name) override;
  HRESULT clear() override;
  HRESULT names(std::vector<std::wstring>& names) override;

  // Makes sure that the client will come back to this session. A session is not kept, and the client gets
  // no cookie, until something is stored or the identifier is read.
  HRESULT keep();
  // Gives the session a new identifier, for when its visitor's rights change: whoever knew the old one cannot
  // use it.
  HRESULT renew();

  FifoLock lock;

  // Under the lock:
  std::string id;
  LONG timeout_minutes = 20;
  LONG code_page = kUtf8CodePage;  // its pages begin with these two
  LONG lcid = kNeutralLocale;
  bool abandoned = false;  // ends with the request
  bool kept = false;
  SessionClient* client = nullptr;  // while a request runs
  Clock::time_point last_used = Clock::now();

 private:
  VariantTable values_;
};

}  // namespace zelto
