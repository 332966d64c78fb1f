#include "site/page_session.h"

#include <korlib_host/errors.h>

#include "text/charset.h"

namespace zelto {

namespace {

constexpr const wchar_t* kCookie = L"zelto_session";

}  // namespace

bool PageSession::open() {
  const ReceivedCookie* cookie = find_named(page_.request.cookies(), kCookie);
  hold_.emplace(store_.open(cookie ? to_utf8(cookie->value) : std::string()));
  if (!*hold_) return false;
  (*hold_)->on_keep = [this] { return keep(); };
  (*hold_)->on_renew = [this] { return renew(); };
  return true;
}

void PageSession::close() {
  if (hold_) store_.close(std::move(*hold_));
  hold_.reset();
}

HRESULT PageSession::keep() {
  if (page_.response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"Nothing can be kept in a new session when the response's head has been sent already.");
  }
  if (!store_.add(state())) {
    refused_ = true;
    return korlib::raise(E_FAIL, L"Session",
                         L"The site keeps as many sessions as its session_limit allows, all of them in use.");
  }
  set_cookie();
  return S_OK;
}

HRESULT PageSession::renew() {
  if (page_.response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"RenewID: the client cannot be told when the response's head has been sent already.");
  }
  store_.rename(state());
  set_cookie();
  return S_OK;
}

void PageSession::set_cookie() {
  page_.response.session_cookie = to_utf8(kCookie) + "=" + state()->id + "; Path=/; HttpOnly; SameSite=Lax" +
                                  (page_.request.http().secure ? "; Secure" : "");
}

}  // namespace zelto
