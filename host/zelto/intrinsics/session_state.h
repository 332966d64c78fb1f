// One user's session: its values, and the lock that lets one request at a time use them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "intrinsics/variant_store.h"
#include "text/charset.h"
#include "text/locale.h"

namespace zelto {

// First come, first served, so that no request of a busy session starves.
class FifoLock {
 public:
  // False when the turn did not come in time.
  bool lock(std::chrono::milliseconds patience);
  bool try_lock();
  void unlock();
  std::size_t waiting() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable turn_came_;
  std::vector<std::uint64_t> waiting_;  // tickets, in order
  std::uint64_t next_ticket_ = 0;
  bool is_held_ = false;
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
  std::function<HRESULT()> on_keep;  // these two are set while a request runs
  std::function<HRESULT()> on_renew;
  Clock::time_point last_used = Clock::now();

 private:
  VariantTable values_;
};

}  // namespace zelto
