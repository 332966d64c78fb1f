// Session.
#pragma once

#include "intrinsics/contents_object.h"
#include "intrinsics/page_state.h"
#include "intrinsics/session_state.h"

namespace zelto {

class SessionObject final : public StoreObject<SessionObject, ZeltoTypeLibrary::ISessionObject, SessionState> {
 public:
  static constexpr const wchar_t* kClassName = L"Session";
  // `page` is the one that is running, if any.
  explicit SessionObject(std::shared_ptr<SessionState> state, PageStatePtr page = nullptr)
      : StoreObject(std::move(state)), page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_SessionID(BSTR* id) override;
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

 private:
  // Keeps the session, and the number in it.
  HRESULT set_number(LONG SessionState::*field, LONG number);

  PageStatePtr page_;
};

}  // namespace zelto
