#include "app/session_store.h"

#include <sys/random.h>

#include <array>
#include <system_error>
#include <vector>

namespace zelto {

namespace {

bool has_expired(const SessionState& session, SessionStore::Clock::time_point now) {
  return now - session.last_used >= std::chrono::minutes(session.timeout_minutes);
}

}  // namespace

std::string make_session_id() {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::array<unsigned char, 16> random{};
  if (getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size())) {
    throw std::system_error(errno, std::generic_category(), "no random numbers");
  }
  std::string id;
  unsigned bits = 0;
  int held = 0;
  for (const unsigned char byte : random) {
    bits = bits << 8 | byte;
    for (held += 8; held >= 6; held -= 6) id += kDigits[bits >> (held - 6) & 63];
  }
  id += kDigits[bits << (6 - held) & 63];
  return id;
}

SessionStore::~SessionStore() {
  for (auto& [id, session] : sessions_) session->clear();
}

std::shared_ptr<SessionState> SessionStore::find(std::string_view id) const {
  const std::scoped_lock guard(mutex_);
  const auto found = sessions_.find(std::string(id));
  return found == sessions_.end() ? nullptr : found->second;
}

bool SessionStore::is_listed(const SessionState& session) const {
  const std::scoped_lock guard(mutex_);
  const auto found = sessions_.find(session.id);
  return found != sessions_.end() && found->second.get() == &session;
}

void SessionStore::forget(const SessionState& session) {
  const std::scoped_lock guard(mutex_);
  sessions_.erase(session.id);
}

void SessionStore::end(SessionState& session) {
  forget(session);
  session.clear();
}

SessionHold SessionStore::open(std::string_view id, Clock::time_point now) {
  if (const std::shared_ptr<SessionState> known = find(id)) {
    if (!known->lock.lock(patience_)) return {};
    // While this request waited, the session may have ended or got another identifier.
    if (known->id == id && is_listed(*known)) {
      if (!has_expired(*known, now)) return SessionHold(known);
      end(*known);
    }
    known->lock.unlock();
  }
  auto made = std::make_shared<SessionState>(make_id());
  made->timeout_minutes = timeout_minutes_;
  made->lock.try_lock();
  return SessionHold(std::move(made));
}

void SessionStore::add(const std::shared_ptr<SessionState>& session) {
  const std::scoped_lock guard(mutex_);
  sessions_.emplace(session->id, session);
}

void SessionStore::rename(const std::shared_ptr<SessionState>& session) {
  const std::string id = make_id();
  const std::scoped_lock guard(mutex_);
  sessions_.erase(session->id);
  session->id = id;
  sessions_.emplace(id, session);
}

void SessionStore::close(SessionHold hold) {
  if (!hold) return;
  hold->on_keep = hold->on_renew = nullptr;
  hold->last_used = Clock::now();
  if (hold->abandoned) end(*hold.state());
}

std::size_t SessionStore::sweep(Clock::time_point now) {
  std::vector<std::shared_ptr<SessionState>> all;
  {
    const std::scoped_lock guard(mutex_);
    for (const auto& [id, session] : sessions_) all.push_back(session);
  }
  std::size_t ended = 0;
  for (const auto& session : all) {
    if (!session->lock.try_lock()) continue;
    const SessionHold hold(session);
    if (!has_expired(*session, now)) continue;
    end(*session);
    ++ended;
  }
  return ended;
}

std::size_t SessionStore::size() const {
  const std::scoped_lock guard(mutex_);
  return sessions_.size();
}

}  // namespace zelto
