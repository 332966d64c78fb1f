// The connections of a server: how many there may be, in all and from one address, and which of them give way.
#pragma once

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
#include <utility>
#include <vector>

namespace zelto {

class Connection;

struct ConnectionCounts {
  std::size_t in_all = 4096;
  std::size_t per_address = 2048;  // of an IPv6 client, the /64 that it has; 0 is no limit
};

// Any thread may call any method.
class ConnectionTable {
 public:
  using Pointer = std::shared_ptr<Connection>;

  explicit ConnectionTable(ConnectionCounts counts) : counts_(counts) {}

  struct Admission {
    bool admitted = false;
    Pointer gives_way;  // must be asked to close: it waits for its client longer than all others
  };
  // Takes the new connection in. Where there are too many, one that waits for a client which has nothing to be answered
  // gives way to it; when there is none, the new one is not admitted. `is_limited` is false for an address through
  // which many clients come.
  Admission admit(const Pointer& connection, const boost::asio::ip::address& address, bool is_limited);
  // The one that would give way next; null when there is none.
  Pointer longest_waiting();
  // Whether the connection waits for a client that has nothing to be answered: it may be closed for another one.
  void set_waiting(Connection* connection, bool waits);
  // Called by its destructor.
  void remove(Connection* connection);

  std::vector<Pointer> all() const;
  // False when some are left after that time.
  bool wait_until_empty(std::chrono::milliseconds patience);

 private:
  using Client = std::pair<bool, std::uint64_t>;  // IPv6, and the address or the part of it that counts
  struct Entry;
  using Waiting = std::list<Entry*>;  // the longest first
  struct Entry {
    std::weak_ptr<Connection> connection;
    Client client;
    Waiting waiting;  // this entry, while it is in no other list
    Waiting::iterator place;
    bool waits = false;
  };

  static Client client_of(const boost::asio::ip::address& address);
  Pointer take_waiting(const Client* client);

  const ConnectionCounts counts_;
  mutable std::mutex lock_;  // guards what follows; never held while a connection is released
  std::condition_variable emptied_;
  std::unordered_map<Connection*, Entry> entries_;
  std::map<Client, std::size_t> clients_;  // how many connections each has
  Waiting waiting_;
};

}  // namespace zelto
