#include "intrinsics/application_state.h"

#include <korlib/dictionary.h>
#include <korlib/ptr.h>
#include <korlib_host/errors.h>

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Application";

// Whether every thread may hold the value.
bool can_be_shared(const VARIANT& value) {
  if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) {
    return !value.punkVal || CComQIPtr<IKorLibDictionary>(value.punkVal);
  }
  return !(value.vt & VT_ARRAY) || !holds_script_object(value);
}

}  // namespace

HRESULT ApplicationState::wait_for(std::unique_lock<std::mutex>& guard, const void* owner) {
  if (unlocked_.wait_for(guard, patience_, [&] { return !owner_ || owner_ == owner; })) return S_OK;
  return korlib::raise(E_FAIL, kSource, L"Another page holds the Application's lock for too long.");
}

HRESULT ApplicationState::lock(const void* owner) {
  std::unique_lock guard(mutex_);
  RETURN_IF_FAILED(wait_for(guard, owner));
  owner_ = owner;
  return S_OK;
}

void ApplicationState::unlock(const void* owner) {
  const std::scoped_lock guard(mutex_);
  if (owner_ != owner) return;
  owner_ = nullptr;
  unlocked_.notify_all();
}

HRESULT ApplicationState::get(std::wstring_view name, VARIANT* value) {
  const std::scoped_lock guard(mutex_);
  return values_.get(name, value);
}

HRESULT ApplicationState::put(const void* owner, std::wstring_view name, const VARIANT& value) {
  CComVariant copy;
  RETURN_IF_FAILED(VariantCopyInd(&copy, &value));
  if (!can_be_shared(copy)) {
    return korlib::raise(E_INVALIDARG, kSource, L"The Application keeps plain values and dictionaries only.");
  }
  std::unique_lock guard(mutex_);
  RETURN_IF_FAILED(wait_for(guard, owner));
  values_.put(name, std::move(copy));
  return S_OK;
}

HRESULT ApplicationState::remove(const void* owner, std::wstring_view name) {
  std::unique_lock guard(mutex_);
  RETURN_IF_FAILED(wait_for(guard, owner));
  values_.remove(name);
  return S_OK;
}

HRESULT ApplicationState::clear(const void* owner) {
  std::unique_lock guard(mutex_);
  RETURN_IF_FAILED(wait_for(guard, owner));
  values_.clear();
  return S_OK;
}

HRESULT ApplicationState::names(std::vector<std::wstring>& names) {
  const std::scoped_lock guard(mutex_);
  names = values_.names();
  return S_OK;
}

}  // namespace zelto
