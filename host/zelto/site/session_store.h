// The sessions of a site.
#pragma once

#include <chrono>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "intrinsics/session_state.h"
#include "site/session_order.h"

namespace zelto {

// 128 random bits in base64url: what nobody can guess.
std::string make_session_id();

// A session whose lock a request holds; empty when the request did not get the lock in time.
class SessionHold {
 public:
  SessionHold() = default;
  explicit SessionHold(std::shared_ptr<SessionState> locked) : state_(std::move(locked)) {}
  SessionHold(SessionHold&& other) noexcept = default;
  SessionHold& operator=(SessionHold&& other) noexcept {
    std::swap(state_, other.state_);
    return *this;
  }
  ~SessionHold() {
    if (state_) state_->lock.unlock();
  }

  explicit operator bool() const { return state_ != nullptr; }
  SessionState* operator->() const { return state_.get(); }
  const std::shared_ptr<SessionState>& state() const { return state_; }

 private:
  std::shared_ptr<SessionState> state_;
};

// Any thread may call any method.
class SessionStore {
 public:
  using Clock = SessionState::Clock;

  static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

  // `suffix` ends every identifier: of several hosts behind one name, the one that a request must go to.
  // `limit` is the number of sessions that are kept at a time.
  SessionStore(std::chrono::milliseconds patience, LONG timeout_minutes, std::string suffix = {},
               std::size_t limit = kNoLimit)
      : patience_(patience), suffix_(std::move(suffix)), timeout_minutes_(timeout_minutes), limit_(limit) {}
  // Ends every session. No request may hold one.
  ~SessionStore();
  SessionStore(const SessionStore&) = delete;
  SessionStore& operator=(const SessionStore&) = delete;

  // The session of that identifier, or a new one under a new identifier when there is none (any more). Waits for
  // requests that hold it; when they take too long the hold is empty.
  SessionHold open(std::string_view id, Clock::time_point now = Clock::now());
  // Whether a request with that identifier would find a session.
  bool has(std::string_view id) const { return find(id) != nullptr; }
  // Lets later requests find the session, which a client at that address has begun. The caller holds its lock. At the
  // limit the session that SessionOrder tells ends for it. False when requests use every one of them.
  bool add(const std::shared_ptr<SessionState>& session, const std::string& address = {});
  // Lets later requests find the session by a new identifier only, from make_id(). The caller holds its lock.
  void rename(const std::shared_ptr<SessionState>& session, std::string id);
  std::string make_id() const { return make_session_id() + suffix_; }
  // The end of a request: an abandoned session ends now, another one counts its time from now.
  void close(SessionHold hold);

  // Ends the sessions that have not been used for their time, except one that is in use now. Answers how
  // many.
  std::size_t sweep(Clock::time_point now);
  std::size_t size() const;
  std::size_t limit() const;
  // The time-out of sessions that begin from now on, and how many are kept. Existing sessions stay, even beyond the
  // limit.
  void set_limits(LONG timeout_minutes, std::size_t limit);
  // How many sessions have given way since this was asked last.
  std::size_t take_evicted();

 private:
  using State = std::shared_ptr<SessionState>;
  struct Entry {
    State session;
    SessionOrder::Handle place;
  };

  State find(std::string_view id) const;
  bool recognise(const SessionState& session);
  SessionHold lock_first() const;
  void erase(std::string_view id) noexcept;
  void end(SessionState& session);
  void forget(const SessionState& session);

  const std::chrono::milliseconds patience_;
  const std::string suffix_;
  mutable std::mutex mutex_;  // guards what follows
  LONG timeout_minutes_;
  std::size_t limit_;
  std::unordered_map<std::string_view, Entry> sessions_;  // by the identifiers that the sessions themselves have
  SessionOrder order_;
  std::size_t evicted_ = 0;
};

}  // namespace zelto
