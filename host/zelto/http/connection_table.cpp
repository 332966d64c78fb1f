#include "http/connection_table.h"

#include <utility>

namespace zelto {

ConnectionTable::Client ConnectionTable::client_of(const boost::asio::ip::address& address) {
  if (address.is_v4()) return {false, address.to_v4().to_uint()};
  const auto v6 = address.to_v6();
  if (v6.is_v4_mapped()) return {false, boost::asio::ip::make_address_v4(boost::asio::ip::v4_mapped, v6).to_uint()};
  const auto bytes = v6.to_bytes();
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i) prefix = prefix << 8 | bytes[i];
  return {true, prefix};
}

ConnectionTable::Admission ConnectionTable::admit(const Pointer& connection, const boost::asio::ip::address& address,
                                                  bool is_limited) {
  const Client client = client_of(address);
  Admission admission;
  const std::lock_guard lock(lock_);
  const auto known = clients_.find(client);
  const bool client_is_full =
      is_limited && counts_.per_address > 0 && known != clients_.end() && known->second >= counts_.per_address;
  if (client_is_full || entries_.size() >= counts_.in_all) {
    admission.gives_way = take_waiting(client_is_full ? &client : nullptr);
    if (!admission.gives_way) return admission;
  }
  // What can fail comes first.
  Waiting place(1);
  std::size_t& count = clients_[client];
  Entry& entry = entries_[connection.get()];
  ++count;
  entry.connection = connection;
  entry.client = client;
  entry.place = place.begin();
  *entry.place = &entry;
  entry.waits = true;
  waiting_.splice(waiting_.end(), place);
  admission.admitted = true;
  return admission;
}

ConnectionTable::Pointer ConnectionTable::longest_waiting() {
  const std::lock_guard lock(lock_);
  return take_waiting(nullptr);
}

// Of that client, or of any. It counts as waiting no longer: it is about to close.
ConnectionTable::Pointer ConnectionTable::take_waiting(const Client* client) {
  for (Entry* entry : waiting_) {
    if (client && entry->client != *client) continue;
    Pointer taken = entry->connection.lock();
    if (!taken) continue;
    entry->waits = false;
    entry->waiting.splice(entry->waiting.end(), waiting_, entry->place);
    return taken;
  }
  return nullptr;
}

void ConnectionTable::set_waiting(Connection* connection, bool waits) {
  const std::lock_guard lock(lock_);
  const auto found = entries_.find(connection);
  if (found == entries_.end() || std::exchange(found->second.waits, waits) == waits) return;
  Entry& entry = found->second;
  if (waits)
    waiting_.splice(waiting_.end(), entry.waiting);
  else
    entry.waiting.splice(entry.waiting.end(), waiting_, entry.place);
}

void ConnectionTable::remove(Connection* connection) {
  const std::lock_guard lock(lock_);
  const auto found = entries_.find(connection);
  if (found == entries_.end()) return;
  if (found->second.waits) waiting_.erase(found->second.place);
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
