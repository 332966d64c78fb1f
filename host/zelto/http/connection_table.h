// The connections of a server: how many there may be, in all and from one address, and which of them give way.
#pragma once

#include <array>
#include <boost/asio/ip/address.hpp>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "http/client_address.h"

namespace zelto {

class Connection;

enum class ConnectionState {
  busy,        // with the host
  exchanging,  // a body or an answer, at its client's pace
  waiting,     // for a client that has nothing to be answered
};

struct ConnectionCounts {
  std::size_t in_all = 4096;
  std::size_t per_address = 2048;  // of an IPv6 client, the /64 that it has; 0 is no limit
  std::chrono::milliseconds exchange = std::chrono::seconds(10);  // that a body or an answer has whatever comes
};

// Any thread may call any method.
class ConnectionTable {
 public:
  using Pointer = std::shared_ptr<Connection>;
  using Clock = std::chrono::steady_clock;

  explicit ConnectionTable(ConnectionCounts counts) : counts_(counts) {}

  struct Admission {
    bool admitted = false;
    Pointer gives_way;  // must be asked to close
  };
  // Takes the new connection in. Where there are too many, one gives way to it: the one that has been waiting longest,
  // else the one that has been exchanging longest, if that is long enough. When there is none, the new one is
  // not admitted. `is_limited` is false for an address through which many clients come.
  Admission admit(const Pointer& connection, const boost::asio::ip::address& address, bool is_limited);
  // The one that would give way next; null when there is none.
  Pointer take_oldest();
  void set_state(Connection* connection, ConnectionState state);
  // Called by its destructor.
  void remove(Connection* connection);

  std::vector<Pointer> all() const;
  // False when some are left after that time.
  bool wait_until_empty(std::chrono::milliseconds patience);

 private:
  struct Entry;
  using List = std::list<Entry*>;  // the longest first
  struct Entry {
    std::weak_ptr<Connection> connection;
    ClientAddress client;
    ConnectionState state = ConnectionState::waiting;
    Clock::time_point since;
    List* list = nullptr;  // that this entry is in
    List::iterator place;
  };

  Pointer take(const ClientAddress* client);
  Pointer take_from(List& list, const ClientAddress* client, Clock::time_point before);
  void move(Entry& entry, ConnectionState state);
  List& list_of(ConnectionState state) { return lists_[static_cast<std::size_t>(state)]; }

  const ConnectionCounts counts_;
  mutable std::mutex lock_;  // guards what follows; never held while a connection is released
  std::condition_variable emptied_;
  std::unordered_map<Connection*, Entry> entries_;
  std::map<ClientAddress, std::size_t> clients_;  // how many connections each has
  std::array<List, 3> lists_;                     // of each state
};

}  // namespace zelto
