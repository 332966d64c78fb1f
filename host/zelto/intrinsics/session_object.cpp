#include "intrinsics/session_object.h"

#include "intrinsics/contents_object.h"
#include "intrinsics/guard.h"
#include "text/charset.h"

namespace zelto {

namespace {
constexpr std::wstring_view kSource = L"Session";
constexpr LONG kMostMinutes = 24 * 60;
}  // namespace

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
  if (!id) return E_POINTER;
  *id = nullptr;
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(state_->keep());
    return give_text(to_wide(state_->id), id);
  });
}

HRESULT SessionObject::get_Value(BSTR name, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  return guarded(kSource, [&] { return state_->get(korlib::view_of(name), value); });
}

HRESULT SessionObject::put_Value(BSTR name, VARIANT value) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant plain;
    RETURN_IF_FAILED(plain_value(value, plain));
    return state_->put(korlib::view_of(name), plain);
  });
}

HRESULT SessionObject::putref_Value(BSTR name, VARIANT value) {
  return guarded(kSource, [&] { return state_->put(korlib::view_of(name), value); });
}

HRESULT SessionObject::get_Timeout(LONG* minutes) {
  if (!minutes) return E_POINTER;
  *minutes = state_->timeout_minutes;
  return S_OK;
}

HRESULT SessionObject::put_Timeout(LONG minutes) {
  if (minutes < 1 || minutes > kMostMinutes) {
    return korlib::raise(E_INVALIDARG, kSource, L"Timeout is a number of minutes from 1 to 1440.");
  }
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(state_->keep());
    state_->timeout_minutes = minutes;
    return S_OK;
  });
}

HRESULT SessionObject::keep_number(LONG SessionState::*field, LONG number) {
  if ((*state_).*field == number) return S_OK;
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(state_->keep());
    (*state_).*field = number;
    return S_OK;
  });
}

HRESULT SessionObject::get_CodePage(LONG* code_page) {
  *code_page = state_->code_page;
  return S_OK;
}

HRESULT SessionObject::put_CodePage(LONG code_page) {
  RETURN_IF_FAILED(check_code_page(kSource, code_page));
  RETURN_IF_FAILED(keep_number(&SessionState::code_page, code_page));
  if (page_) page_->set_code_page(code_page);
  return S_OK;
}

HRESULT SessionObject::get_LCID(LONG* lcid) {
  *lcid = state_->lcid;
  return S_OK;
}

HRESULT SessionObject::put_LCID(LONG lcid) {
  RETURN_IF_FAILED(check_locale(kSource, lcid));
  RETURN_IF_FAILED(keep_number(&SessionState::lcid, lcid));
  if (page_) page_->response.lcid = lcid;
  return S_OK;
}

HRESULT SessionObject::RenewID() {
  return guarded(kSource, [&] { return state_->renew(); });
}

HRESULT SessionObject::Abandon() {
  state_->abandoned = true;
  return S_OK;
}

HRESULT SessionObject::get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) {
  if (!contents) return E_POINTER;
  *contents = nullptr;
  return guarded(kSource, [&] {
    *contents = korlib::make<ContentsObject>(state_).detach();
    return S_OK;
  });
}

}  // namespace zelto
