// The values that all users share, one page's hold on them, and the object through which it uses them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "intrinsics/contents_object.h"
#include "intrinsics/variant_store.h"

namespace zelto {

class ApplicationHold;

// Values are plain ones, and host dictionaries of such values, whose references may be counted by many threads. They
// are reached through holds.
class ApplicationState {
 public:
  // `patience` is how long a page waits for a lock that another one has.
  explicit ApplicationState(std::chrono::milliseconds patience) : patience_(patience) {}
  ApplicationState(const ApplicationState&) = delete;
  ApplicationState& operator=(const ApplicationState&) = delete;
  // No other thread may use any dictionary that was in an Application.
  ~ApplicationState();

 private:
  friend class ApplicationHold;

  const std::chrono::milliseconds patience_;
  std::mutex mutex_;
  std::condition_variable unlocked_;
  const ApplicationHold* owner_ = nullptr;  // of the lock
  VariantTable values_;
};

// The lock that it took goes with it. Any thread may call any method.
class ApplicationHold final : public VariantStore {
 public:
  explicit ApplicationHold(std::shared_ptr<ApplicationState> state) : state_(std::move(state)) {}
  ~ApplicationHold() override { unlock(); }

  // Keeps all others from changing values until unlock(). Asking again changes nothing. An error when another
  // page does not let go in time.
  HRESULT lock();
  void unlock();

  HRESULT get(std::wstring_view name, VARIANT* value) override;
  HRESULT put(std::wstring_view name, const VARIANT& value) override;
  HRESULT remove(std::wstring_view name) override;
  HRESULT clear() override;
  HRESULT names(std::vector<std::wstring>& names) override;

 private:
  bool has(std::wstring_view name);
  // Makes the change once no other page has the lock.
  template <class Change>
  HRESULT change(Change make);

  std::shared_ptr<ApplicationState> state_;
};

// Application, as one page sees it.
class ApplicationObject final
    : public StoreObject<ApplicationObject, ZeltoTypeLibrary::IApplicationObject, ApplicationHold> {
 public:
  static constexpr const wchar_t* kClassName = L"Application";
  using StoreObject::StoreObject;
  static std::span<const korlib::Member> members();

  HRESULT Lock() override;
  HRESULT UnLock() override;
};

}  // namespace zelto
