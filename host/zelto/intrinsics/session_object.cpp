#include "intrinsics/session_object.h"

#include "text/charset.h"

namespace zelto {

namespace {
constexpr LONG kMostMinutes = 24 * 60;
}

std::span<const korlib::Member> SessionObject::members() {
  using S = SessionObject;
  static constexpr korlib::Member table[] = {
      property<&S::get_Value, &S::put_Value, &S::putref_Value>(L"Value").is_default(),
      property<&S::get_Contents>(L"Contents"),
      property<&S::get_SessionID>(L"SessionID"),
      property<&S::get_Timeout, &S::put_Timeout>(L"Timeout"),
      property<&S::get_CodePage, &S::put_CodePage>(L"CodePage"),
      property<&S::get_LCID, &S::put_LCID>(L"LCID"),
      method<&S::Abandon>(L"Abandon"),
      method<&S::RenewID>(L"RenewID"),
  };
  return table;
}

HRESULT SessionObject::get_SessionID(BSTR* id) {
  return guarded(kClassName, id, [&]() -> HRESULT {
    RETURN_IF_FAILED(store_->keep());
    return give_text(to_wide(store_->id), id);
  });
}

HRESULT SessionObject::set_number(LONG SessionState::*field, LONG number) {
  return guarded(kClassName, [&]() -> HRESULT {
    RETURN_IF_FAILED(store_->keep());
    (*store_).*field = number;
    return S_OK;
  });
}

HRESULT SessionObject::get_Timeout(LONG* minutes) { return give(store_->timeout_minutes, minutes); }

HRESULT SessionObject::put_Timeout(LONG minutes) {
  if (minutes < 1 || minutes > kMostMinutes) {
    return korlib::raise(E_INVALIDARG, kClassName, L"Timeout is a number of minutes from 1 to 1440.");
  }
  return set_number(&SessionState::timeout_minutes, minutes);
}

// Many pages begin by setting the two that follow to what they are: no reason to keep a session.

HRESULT SessionObject::get_CodePage(LONG* code_page) { return give(store_->code_page, code_page); }

HRESULT SessionObject::put_CodePage(LONG code_page) {
  RETURN_IF_FAILED(check_code_page(kClassName, code_page));
  if (code_page != store_->code_page) RETURN_IF_FAILED(set_number(&SessionState::code_page, code_page));
  if (page_) page_->set_code_page(code_page);
  return S_OK;
}

HRESULT SessionObject::get_LCID(LONG* lcid) { return give(store_->lcid, lcid); }

HRESULT SessionObject::put_LCID(LONG lcid) {
  RETURN_IF_FAILED(check_locale(kClassName, lcid));
  if (lcid != store_->lcid) RETURN_IF_FAILED(set_number(&SessionState::lcid, lcid));
  if (page_) page_->response.lcid = lcid;
  return S_OK;
}

HRESULT SessionObject::RenewID() {
  return guarded(kClassName, [&] { return store_->renew(); });
}

HRESULT SessionObject::Abandon() {
  store_->abandoned = true;
  return S_OK;
}

}  // namespace zelto
