#include "intrinsics/application.h"

#include <korlib_host/dictionaries.h>
#include <korlib_host/errors.h>

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Application";

}  // namespace

ApplicationState::~ApplicationState() {
  values_.clear();
  korlib_host::free_cycles(korlib_host::CycleReach::all);
}

template <class Change>
HRESULT ApplicationHold::change(Change make) {
  ApplicationState& state = *state_;
  std::unique_lock guard(state.mutex_);
  const auto is_free = [&] { return !state.owner_ || state.owner_ == this; };
  if (!state.unlocked_.wait_for(guard, state.patience_, is_free)) {
    return korlib::raise(E_FAIL, kSource, L"Another page holds the Application's lock for too long.");
  }
  make(state);
  return S_OK;
}

HRESULT ApplicationHold::lock() {
  return change([this](ApplicationState& state) { state.owner_ = this; });
}

void ApplicationHold::unlock() {
  const std::scoped_lock guard(state_->mutex_);
  if (state_->owner_ != this) return;
  state_->owner_ = nullptr;
  state_->unlocked_.notify_all();
}

HRESULT ApplicationHold::get(std::wstring_view name, VARIANT* value) {
  const std::scoped_lock guard(state_->mutex_);
  return state_->values_.get(name, value);
}

bool ApplicationHold::has(std::wstring_view name) {
  const std::scoped_lock guard(state_->mutex_);
  return state_->values_.has(name);
}

HRESULT ApplicationHold::put(std::wstring_view name, const VARIANT& value) {
  RETURN_IF_FAILED(check_room(value, !has(name), kSource));
  CComVariant copy;
  RETURN_IF_FAILED(VariantCopyInd(&copy, &value));
  if (!korlib_host::share(copy)) {
    return korlib::raise(E_INVALIDARG, kSource, L"The Application keeps plain values and dictionaries only.");
  }
  return change([&](ApplicationState& state) { state.values_.put(name, std::move(copy)); });
}

HRESULT ApplicationHold::remove(std::wstring_view name) {
  return change([&](ApplicationState& state) { state.values_.remove(name); });
}

HRESULT ApplicationHold::clear() {
  return change([](ApplicationState& state) { state.values_.clear(); });
}

HRESULT ApplicationHold::names(std::vector<std::wstring>& names) {
  const std::scoped_lock guard(state_->mutex_);
  names = state_->values_.names();
  return S_OK;
}

std::span<const korlib::Member> ApplicationObject::members() {
  using A = ApplicationObject;
  static constexpr korlib::Member table[] = {
      property<&A::get_Value, &A::put_Value, &A::putref_Value>(L"Value").is_default(),
      property<&A::get_Contents>(L"Contents"),
      method<&A::Lock>(L"Lock"),
      method<&A::UnLock>(L"UnLock"),
  };
  return table;
}

HRESULT ApplicationObject::Lock() {
  return guarded(kClassName, [&] { return store_->lock(); });
}

HRESULT ApplicationObject::UnLock() {
  return guarded(kClassName, [&] {
    store_->unlock();
    return S_OK;
  });
}

}  // namespace zelto
