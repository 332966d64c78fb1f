#include "intrinsics/session_state.h"

#include <korlib_host/dictionaries.h>
#include <korlib_host/errors.h>

#include <algorithm>

namespace zelto {

bool FifoLock::lock(std::chrono::milliseconds patience) {
  std::unique_lock guard(mutex_);
  if (!is_held_ && !is_waited_for()) return is_held_ = true;
  if (!queue_) queue_ = std::make_unique<Queue>();
  Queue& queue = *queue_;
  const std::uint64_t ticket = queue.next_ticket++;
  queue.tickets.push_back(ticket);
  const bool came =
      queue.turn_came.wait_for(guard, patience, [&] { return !is_held_ && queue.tickets.front() == ticket; });
  std::erase(queue.tickets, ticket);
  if (came) is_held_ = true;
  if (queue.tickets.empty()) {
    queue_.reset();
  } else if (!came) {
    queue.turn_came.notify_all();  // the next one may have been waiting for this ticket
  }
  return came;
}

bool FifoLock::try_lock() {
  const std::scoped_lock guard(mutex_);
  if (is_held_ || is_waited_for()) return false;
  is_held_ = true;
  return true;
}

void FifoLock::unlock() {
  const std::scoped_lock guard(mutex_);
  is_held_ = false;
  if (queue_) queue_->turn_came.notify_all();
}

std::size_t FifoLock::waiting() const {
  const std::scoped_lock guard(mutex_);
  return queue_ ? queue_->tickets.size() : 0;
}

HRESULT SessionState::keep() {
  if (kept || !client) return S_OK;
  RETURN_IF_FAILED(client->keep());
  kept = true;
  return S_OK;
}

HRESULT SessionState::renew() {
  if (!kept) return keep();  // under an identifier that nobody has seen yet
  return client ? client->renew() : S_OK;
}

HRESULT SessionState::get(std::wstring_view name, VARIANT* value) { return values_.get(name, value); }

HRESULT SessionState::put(std::wstring_view name, const VARIANT& value) {
  if (holds_script_object(value)) {
    return korlib::raise(E_INVALIDARG, L"Session",
                         L"A script's object ends with its page and cannot be kept in the Session.");
  }
  RETURN_IF_FAILED(check_room(value, !values_.has(name), L"Session"));
  CComVariant copy;
  RETURN_IF_FAILED(VariantCopyInd(&copy, &value));
  RETURN_IF_FAILED(keep());
  values_.put(name, std::move(copy));
  return S_OK;
}

HRESULT SessionState::remove(std::wstring_view name) {
  values_.remove(name);
  return S_OK;
}

HRESULT SessionState::clear() {
  values_.clear();
  korlib_host::free_cycles();
  return S_OK;
}

HRESULT SessionState::names(std::vector<std::wstring>& names) {
  names = values_.names();
  return S_OK;
}

}  // namespace zelto
