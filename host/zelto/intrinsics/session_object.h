// Session.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <memory>

#include "intrinsics/session_state.h"

namespace zelto {

class SessionObject final : public korlib::DispatchObject<SessionObject, ZeltoTypeLibrary::ISessionObject> {
 public:
  static constexpr const wchar_t* kClassName = L"Session";
  explicit SessionObject(std::shared_ptr<SessionState> state) : state_(std::move(state)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_SessionID(BSTR* id) override;
  HRESULT get_Value(BSTR name, VARIANT* value) override;
  HRESULT put_Value(BSTR name, VARIANT value) override;
  HRESULT putref_Value(BSTR name, VARIANT value) override;
  HRESULT get_Timeout(LONG* minutes) override;
  HRESULT put_Timeout(LONG minutes) override;
  HRESULT Abandon() override;
  HRESULT RenewID();
  HRESULT get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) override;

 private:
  std::shared_ptr<SessionState> state_;
};

}  // namespace zelto
