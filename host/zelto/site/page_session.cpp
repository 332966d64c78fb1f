#include "site/page_session.h"

#include <korlib_host/dictionaries.h>
#include <korlib_host/errors.h>

#include <string>
#include <utility>

#include "base/letter_case.h"
#include "http/worker_pool.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

constexpr std::string_view kCookie = "zelto_session";

}  // namespace

// Of two, the first counts: it is the one with the longer path.
std::string_view sent_session(const HttpRequest& request) {
  std::string_view id;
  for (const Header& header : request.headers) {
    if (!base::equal_ascii(header.name, "Cookie")) continue;
    for_each_piece(header.value, ';', [&](std::string_view piece) {
      const std::string_view pair = trim_blanks(piece);
      const std::size_t equals = pair.find('=');
      if (equals == std::string_view::npos || trim_blanks(pair.substr(0, equals)) != kCookie || !id.empty()) return;
      id = trim_blanks(pair.substr(equals + 1));
    });
  }
  return id;
}

bool PageSession::open() {
  hold_.emplace(store_.open(sent_session(page_.request.http())));
  if (!*hold_) return false;
  (*hold_)->client = this;
  return true;
}

// What the page leaves behind may hold objects of the session, so it goes before the next request has that.
void PageSession::close() {
  korlib_host::free_cycles();
  if (hold_) store_.close(std::move(*hold_));
  hold_.reset();
}

HRESULT PageSession::keep() {
  if (page_.response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"Nothing can be kept in a new session when the response's head has been sent already.");
  }
  // What can fail comes first: a session that is kept must be told to its client.
  std::string cookie = cookie_for(state()->id);
  if (!store_.add(state(), page_.request.http().remote_address)) {
    refused_ = true;
    return korlib::raise(E_FAIL, L"Session",
                         L"The site keeps as many sessions as its session_limit allows, all of them in use.");
  }
  page_.response.session_cookie = std::move(cookie);
  WorkerPool::take_turn(state()->id);  // its client may come back before this page ends
  return S_OK;
}

HRESULT PageSession::renew() {
  if (page_.response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"RenewID: the client cannot be told when the response's head has been sent already.");
  }
  std::string id = store_.make_id();
  std::string cookie = cookie_for(id);
  store_.rename(state(), std::move(id));
  WorkerPool::take_turn(state()->id);
  page_.response.session_cookie = std::move(cookie);
  return S_OK;
}

std::string PageSession::cookie_for(const std::string& id) const {
  return std::string(kCookie) + "=" + id + "; Path=/; HttpOnly; SameSite=Lax" +
         (page_.request.http().secure ? "; Secure" : "");
}

}  // namespace zelto
