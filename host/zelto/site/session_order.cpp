#include "site/session_order.h"

namespace zelto {

SessionOrder::Handle SessionOrder::add(const State& session, const ClientAddress& client) {
  Sessions made(1);  // what can fail comes first
  const Handle place = made.begin();
  place->session = session;
  const auto known = addresses_.find(client);
  if (known == addresses_.end()) {
    Addresses fresh(1);
    if (by_size_.empty()) by_size_.emplace_back();
    place->address = fresh.begin();
    place->address->client = client;
    addresses_.emplace(client, place->address);
    with(1).splice(with(1).end(), fresh);
    place->address->newcomers.splice(place->address->newcomers.end(), made);
    return place;
  }
  place->address = known->second;
  const std::size_t before = known->second->size();
  if (by_size_.size() == before) by_size_.emplace_back();
  place->address->newcomers.splice(place->address->newcomers.end(), made);
  rank(place->address, before);
  return place;
}

void SessionOrder::use(Handle session) noexcept {
  Address& address = *session->address;
  Sessions& from = session->has_returned ? address.returned : address.newcomers;
  address.returned.splice(address.returned.end(), from, session);
  session->has_returned = true;
  rank(session->address, address.size());
}

void SessionOrder::remove(Handle session) noexcept {
  const auto address = session->address;
  const std::size_t before = address->size();
  (session->has_returned ? address->returned : address->newcomers).erase(session);
  rank(address, before);
}

void SessionOrder::rank(Addresses::iterator address, std::size_t before) noexcept {
  Addresses& from = with(before);
  if (address->size() == 0) {
    addresses_.erase(address->client);
    from.erase(address);
  } else {
    Addresses& to = with(address->size());
    to.splice(to.end(), from, address);
  }
  while (!by_size_.empty() && by_size_.back().empty()) by_size_.pop_back();
}

}  // namespace zelto
