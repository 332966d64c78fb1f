#include "site/session_order.h"

namespace zelto {

SessionOrder::Handle SessionOrder::add(const State& session, const ClientAddress& client) {
  Sessions made(1);  // what can fail comes first
  const Handle place = made.begin();
  place->session = session;
  const auto known = addresses_.find(client);
  if (known == addresses_.end()) {
    Addresses fresh(1);
    Addresses& singles = with(1);
    place->address = fresh.begin();
    place->address->client = client;
    addresses_.emplace(client, place->address);
    singles.splice(singles.end(), fresh);
    place->address->newcomers.splice(place->address->newcomers.end(), made);
    return place;
  }
  place->address = known->second;
  const std::size_t before = known->second->size();
  with(before + 1);
  place->address->newcomers.splice(place->address->newcomers.end(), made);
  rank(place->address, before);
  return place;
}

void SessionOrder::use(Handle session) {
  Address& address = *session->address;
  Sessions& from = session->has_returned ? address.returned : address.newcomers;
  address.returned.splice(address.returned.end(), from, session);
  session->has_returned = true;
  rank(session->address, address.size());
}

void SessionOrder::remove(Handle session) {
  const auto address = session->address;
  const std::size_t before = address->size();
  if (before > 1) with(before - 1);
  (session->has_returned ? address->returned : address->newcomers).erase(session);
  rank(address, before);
}

void SessionOrder::rank(Addresses::iterator address, std::size_t before) {
  const auto from = by_size_.find(before);
  if (address->size() == 0) {
    addresses_.erase(address->client);
    from->second.erase(address);
  } else {
    Addresses& to = with(address->size());
    to.splice(to.end(), from->second, address);
  }
  if (from->second.empty()) by_size_.erase(from);
}

}  // namespace zelto
