#include "site/session_store.h"

#include <sys/random.h>

#include <array>
#include <system_error>
#include <utility>
#include <vector>

namespace zelto {

namespace {

bool has_expired(const SessionState& session, SessionStore::Clock::time_point now) {
  return now - session.last_used >= std::chrono::minutes(session.timeout_minutes);
}

// Each number is given once. They are asked for in advance, because most pages make an identifier, kept or not.
std::array<unsigned char, 16> random_bytes() {
  constexpr std::size_t kAhead = 16;
  thread_local std::array<std::array<unsigned char, 16>, kAhead> numbers;
  thread_local std::size_t left = 0;
  if (left == 0) {
    if (getrandom(numbers.data(), sizeof numbers, 0) != static_cast<ssize_t>(sizeof numbers)) {
      throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
    left = numbers.size();
  }
  return std::exchange(numbers[--left], {});
}

}  // namespace

std::string make_session_id() {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  const std::array<unsigned char, 16> random = random_bytes();
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
  for (auto& [id, entry] : sessions_) entry.session->clear();
}

SessionStore::State SessionStore::find(std::string_view id) const {
  const std::scoped_lock guard(mutex_);
  const auto found = sessions_.find(id);
  return found == sessions_.end() ? nullptr : found->second.session;
}

// Whether requests still find the session, whose client has come back.
bool SessionStore::recognise(const SessionState& session) {
  const std::scoped_lock guard(mutex_);
  const auto found = sessions_.find(session.id);
  if (found == sessions_.end() || found->second.session.get() != &session) return false;
  order_.use(found->second.place);
  return true;
}

// The first to give way that no request uses. The caller holds the mutex.
SessionHold SessionStore::lock_first() const {
  return SessionHold(order_.first([](SessionState& session) { return session.lock.try_lock(); }));
}

void SessionStore::erase(std::string_view id) noexcept {
  const auto found = sessions_.find(id);
  if (found == sessions_.end()) return;
  order_.remove(found->second.place);
  sessions_.erase(found);
}

void SessionStore::forget(const SessionState& session) {
  const std::scoped_lock guard(mutex_);
  erase(session.id);
}

void SessionStore::end(SessionState& session) {
  forget(session);
  session.clear();
}

SessionHold SessionStore::open(std::string_view id, Clock::time_point now) {
  if (const std::shared_ptr<SessionState> known = find(id)) {
    if (!known->lock.lock(patience_)) return {};
    SessionHold hold(known);
    // While this request waited, the session may have ended or got another identifier.
    if (known->id == id && recognise(*known)) {
      if (!has_expired(*known, now)) return hold;
      end(*known);
    }
  }
  auto made = std::make_shared<SessionState>(make_id());
  {
    const std::scoped_lock guard(mutex_);
    made->timeout_minutes = timeout_minutes_;
  }
  made->lock.try_lock();
  return SessionHold(std::move(made));
}

std::size_t SessionStore::limit() const {
  const std::scoped_lock guard(mutex_);
  return limit_;
}

void SessionStore::set_limits(LONG timeout_minutes, std::size_t limit) {
  const std::scoped_lock guard(mutex_);
  timeout_minutes_ = timeout_minutes;
  limit_ = limit;
}

bool SessionStore::add(const std::shared_ptr<SessionState>& session, const std::string& address) {
  const ClientAddress client = client_of(address);
  SessionHold evicted;  // let go once the mutex is free
  {
    const std::scoped_lock guard(mutex_);
    if (sessions_.size() >= limit_) {
      evicted = lock_first();
      if (!evicted) return false;
    }
    const auto entry = sessions_.emplace(session->id, Entry{session, {}}).first;
    try {
      entry->second.place = order_.add(session, client);
    } catch (...) {
      sessions_.erase(entry);
      throw;
    }
    if (evicted) {
      erase(evicted->id);
      ++evicted_;
    }
  }
  if (evicted) evicted->clear();
  return true;
}

void SessionStore::rename(const std::shared_ptr<SessionState>& session, std::string id) {
  const std::scoped_lock guard(mutex_);
  auto entry = sessions_.extract(session->id);
  session->id = std::move(id);
  entry.key() = session->id;
  sessions_.insert(std::move(entry));
}

void SessionStore::close(SessionHold hold) {
  if (!hold) return;
  hold->client = nullptr;
  hold->last_used = Clock::now();
  if (hold->abandoned) end(*hold.state());
}

std::size_t SessionStore::sweep(Clock::time_point now) {
  std::vector<std::shared_ptr<SessionState>> all;
  {
    const std::scoped_lock guard(mutex_);
    all.reserve(sessions_.size());
    for (const auto& [id, entry] : sessions_) all.push_back(entry.session);
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

std::size_t SessionStore::take_evicted() {
  const std::scoped_lock guard(mutex_);
  return std::exchange(evicted_, 0);
}

}  // namespace zelto
