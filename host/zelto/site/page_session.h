// The session of one request for a page.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "intrinsics/page_state.h"
#include "site/session_store.h"

namespace zelto {

// The identifier of the session that the request's client says is its own; empty without one.
std::string_view sent_session(const HttpRequest& request);

// Finds the session by the request's cookie and holds its lock until close(). A new session is kept, and its cookie
// set, when the page first stores something in it.
class PageSession final : private SessionClient {
 public:
  PageSession(SessionStore& store, PageState& page) : store_(store), page_(page) {}
  ~PageSession() { close(); }
  PageSession(const PageSession&) = delete;
  PageSession& operator=(const PageSession&) = delete;

  // False when requests before this one hold the session for too long.
  bool open();
  // Lets the next request have it; an abandoned session ends.
  void close();

  // Null until open() and after close().
  std::shared_ptr<SessionState> state() const { return hold_ ? hold_->state() : nullptr; }
  // A new session could not be kept: the site has as many as it may, all in use.
  bool was_refused() const { return refused_; }

 private:
  HRESULT keep() override;
  HRESULT renew() override;
  std::string cookie_for(const std::string& id) const;

  SessionStore& store_;
  PageState& page_;
  std::optional<SessionHold> hold_;
  bool refused_ = false;
};

}  // namespace zelto
