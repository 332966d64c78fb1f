#include "http/connection_table.h"

#include <utility>

namespace zelto {

ConnectionTable::Admission ConnectionTable::admit(const Pointer& connection, const boost::asio::ip::address& address,
                                                  bool is_limited) {
  const ClientAddress client = client_of(address);
  Admission admission;
  const std::lock_guard lock(lock_);
  // What can fail comes first, before anybody has given way.
  List place(1);
  const auto known = clients_.try_emplace(client).first;
  std::size_t& count = known->second;
  const auto forget_client = [&] {
    if (count == 0) clients_.erase(known);
  };
  const bool client_is_full = is_limited && counts_.per_address > 0 && count >= counts_.per_address;
  const bool is_full = client_is_full || entries_.size() >= counts_.in_all;
  auto made = entries_.end();
  try {
    made = entries_.try_emplace(connection.get()).first;
  } catch (...) {
    forget_client();
    throw;
  }
  if (is_full) {
    admission.gives_way = take(client_is_full ? &client : nullptr);
    if (!admission.gives_way) {
      entries_.erase(made);
      forget_client();
      return admission;
    }
  }
  Entry& entry = made->second;
  ++count;
  entry.connection = connection;
  entry.client = client;
  entry.since = Clock::now();
  entry.list = &list_of(entry.state);
  entry.place = place.begin();
  *entry.place = &entry;
  entry.list->splice(entry.list->end(), place);
  admission.admitted = true;
  return admission;
}

ConnectionTable::Pointer ConnectionTable::take_oldest() {
  const std::lock_guard lock(lock_);
  return take(nullptr);
}

// Of that client, or of any.
ConnectionTable::Pointer ConnectionTable::take(const ClientAddress* client) {
  const auto now = Clock::now();
  if (auto taken = take_from(list_of(ConnectionState::waiting), client, now)) return taken;
  return take_from(list_of(ConnectionState::exchanging), client, now - counts_.exchange);
}

// The first that has been there since then. It counts as busy from now on: it is about to close.
ConnectionTable::Pointer ConnectionTable::take_from(List& list, const ClientAddress* client, Clock::time_point before) {
  for (Entry* entry : list) {
    if (entry->since > before) break;
    if (client && entry->client != *client) continue;
    Pointer taken = entry->connection.lock();
    if (!taken) continue;
    move(*entry, ConnectionState::busy);
    return taken;
  }
  return nullptr;
}

void ConnectionTable::move(Entry& entry, ConnectionState state) {
  List& to = list_of(state);
  to.splice(to.end(), *entry.list, entry.place);
  entry.list = &to;
  entry.state = state;
  entry.since = Clock::now();
}

void ConnectionTable::set_state(Connection* connection, ConnectionState state) {
  const std::lock_guard lock(lock_);
  const auto found = entries_.find(connection);
  if (found != entries_.end() && found->second.state != state) move(found->second, state);
}

void ConnectionTable::remove(Connection* connection) {
  const std::lock_guard lock(lock_);
  const auto found = entries_.find(connection);
  if (found == entries_.end()) return;
  found->second.list->erase(found->second.place);
  const auto client = clients_.find(found->second.client);
  if (client != clients_.end() && --client->second == 0) clients_.erase(client);
  entries_.erase(found);
  if (entries_.empty()) emptied_.notify_all();
}

std::vector<ConnectionTable::Pointer> ConnectionTable::all() const {
  std::vector<Pointer> alive;
  const std::lock_guard lock(lock_);
  for (const auto& [key, entry] : entries_)
    if (auto connection = entry.connection.lock()) alive.push_back(std::move(connection));
  return alive;
}

bool ConnectionTable::wait_until_empty(std::chrono::milliseconds patience) {
  std::unique_lock lock(lock_);
  return emptied_.wait_for(lock, patience, [this] { return entries_.empty(); });
}

}  // namespace zelto
