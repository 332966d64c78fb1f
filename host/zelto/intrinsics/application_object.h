// Application, as one page sees it.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <memory>

#include "intrinsics/application_state.h"

namespace zelto {

// One page's hold on the shared values. The lock that it took goes with it.
class ApplicationHold final : public VariantStore {
 public:
  explicit ApplicationHold(std::shared_ptr<ApplicationState> state) : state_(std::move(state)) {}
  ~ApplicationHold() override { unlock(); }

  HRESULT lock() { return state_->lock(this); }
  void unlock() { state_->unlock(this); }

  HRESULT get(std::wstring_view name, VARIANT* value) override { return state_->get(name, value); }
  HRESULT put(std::wstring_view name, const VARIANT& value) override { return state_->put(this, name, value); }
  HRESULT remove(std::wstring_view name) override { return state_->remove(this, name); }
  HRESULT clear() override { return state_->clear(this); }
  HRESULT names(std::vector<std::wstring>& names) override { return state_->names(names); }

 private:
  std::shared_ptr<ApplicationState> state_;
};

class ApplicationObject final : public korlib::DispatchObject<ApplicationObject, ZeltoTypeLibrary::IApplicationObject> {
 public:
  static constexpr const wchar_t* kClassName = L"Application";
  explicit ApplicationObject(std::shared_ptr<ApplicationHold> hold) : hold_(std::move(hold)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Value(BSTR name, VARIANT* value) override;
  HRESULT put_Value(BSTR name, VARIANT value) override;
  HRESULT putref_Value(BSTR name, VARIANT value) override;
  HRESULT Lock() override;
  HRESULT UnLock() override;
  HRESULT get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) override;

 private:
  std::shared_ptr<ApplicationHold> hold_;
};

}  // namespace zelto
