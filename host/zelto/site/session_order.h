// Which session gives way when there are too many.
#pragma once

#include <array>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "http/client_address.h"
#include "intrinsics/session_state.h"

namespace zelto {

// Those of the address with the most sessions give way, so that nobody can fill the site for others: first those whose
// client has not come back yet, as clients without cookies never do, then the others, each the least recently used
// first. A quarter of an address's places is left to the former: where visitors fill them all, the next one could
// otherwise not come back before another one does. Of several addresses with as many sessions it is the one that was
// not used for longest. Not synchronised. Nothing looks at every session; only those that are not accepted cost more.
class SessionOrder {
 private:
  struct Place;
  struct Address;
  using State = std::shared_ptr<SessionState>;
  using Sessions = std::list<Place>;
  using Addresses = std::list<Address>;

 public:
  using Handle = Sessions::iterator;

  SessionOrder() = default;
  SessionOrder(const SessionOrder&) = delete;
  SessionOrder& operator=(const SessionOrder&) = delete;

  // A session that begins now, of a client at that address. Throws std::bad_alloc, and is unchanged then.
  Handle add(const State& session, const ClientAddress& client);
  // Its client has come back.
  void use(Handle session) noexcept;
  void remove(Handle session) noexcept;

  // The first that gives way and that `accepts` says true of; null when there is none.
  template <class Accepts>
  State first(Accepts accepts) const;

 private:
  struct Place {
    State session;
    Addresses::iterator address;
    bool has_returned = false;
  };
  struct Address {
    ClientAddress client;
    Sessions newcomers;  // the least recently used first, as in all of these lists
    Sessions returned;
    std::size_t size() const { return newcomers.size() + returned.size(); }
    // Those that give way first, and those that do when all of these are in use.
    std::array<const Sessions*, 2> in_order() const {
      constexpr std::size_t kLeftPart = 4;
      if (newcomers.size() < size() / kLeftPart) return {&returned, &newcomers};
      return {&newcomers, &returned};
    }
  };

  // Puts the address, which had `before` sessions, after those with as many as it has now. Forgets it without any.
  void rank(Addresses::iterator address, std::size_t before) noexcept;
  // The list of the addresses with that many sessions.
  Addresses& with(std::size_t sessions) { return by_size_[sessions - 1]; }

  std::map<ClientAddress, Addresses::iterator> addresses_;
  // Of the addresses with 1, 2, 3 … sessions, up to the most that any has: what loses one finds its list.
  std::vector<Addresses> by_size_;
};

template <class Accepts>
SessionOrder::State SessionOrder::first(Accepts accepts) const {
  for (auto addresses = by_size_.rbegin(); addresses != by_size_.rend(); ++addresses) {
    for (const Address& address : *addresses) {
      for (const Sessions* sessions : address.in_order()) {
        for (const Place& place : *sessions) {
          if (accepts(*place.session)) return place.session;
        }
      }
    }
  }
  return nullptr;
}

}  // namespace zelto
