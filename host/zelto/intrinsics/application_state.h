// The values that all users share.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "intrinsics/variant_store.h"

namespace zelto {

// Any thread may call any method. Values are plain ones, and host dictionaries, whose references may be
// counted by many threads.
class ApplicationState {
 public:
  explicit ApplicationState(std::chrono::milliseconds patience) : patience_(patience) {}

  // Keeps all others from changing values until `owner` unlocks. Asking again changes nothing. An error
  // when another owner does not let go in time.
  HRESULT lock(const void* owner);
  void unlock(const void* owner);

  HRESULT get(std::wstring_view name, VARIANT* value);
  HRESULT put(const void* owner, std::wstring_view name, const VARIANT& value);
  HRESULT remove(const void* owner, std::wstring_view name);
  HRESULT clear(const void* owner);
  HRESULT names(std::vector<std::wstring>& names);

 private:
  HRESULT wait_for(std::unique_lock<std::mutex>& guard, const void* owner);

  const std::chrono::milliseconds patience_;
  std::mutex mutex_;
  std::condition_variable unlocked_;
  const void* owner_ = nullptr;
  VariantTable values_;
};

}  // namespace zelto
