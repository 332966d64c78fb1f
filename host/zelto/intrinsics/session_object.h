// Session.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <memory>

#include "intrinsics/page_state.h"
#include "intrinsics/session_state.h"

namespace zelto {

class SessionObject final : public korlib::DispatchObject<SessionObject, ZeltoTypeLibrary::ISessionObject> {
 public:
  static constexpr const wchar_t* kClassName = L"Session";
  // `page` is the one that is running, if any.
  explicit SessionObject(std::shared_ptr<SessionState> state, PageStatePtr page = nullptr)
      : state_(std::move(state)), page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_SessionID(BSTR* id) override;
  HRESULT get_Value(BSTR name, VARIANT* value) override;
  HRESULT put_Value(BSTR name, VARIANT value) override;
  HRESULT putref_Value(BSTR name, VARIANT value) override;
  HRESULT get_Timeout(LONG* minutes) override;
  HRESULT put_Timeout(LONG minutes) override;
  HRESULT Abandon() override;
  HRESULT RenewID();
  // Setting these two sets them for the page that is running as well. The session's later pages begin with
  // them, except those whose directive says otherwise.
  HRESULT get_CodePage(LONG* code_page);
  HRESULT put_CodePage(LONG code_page);
  HRESULT get_LCID(LONG* lcid);
  HRESULT put_LCID(LONG lcid);
  HRESULT get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) override;

 private:
  // A session that is told what it has already need not be kept for it.
  HRESULT keep_number(LONG SessionState::*field, LONG number);

  std::shared_ptr<SessionState> state_;
  PageStatePtr page_;
};

}  // namespace zelto
