#include "http/connection_table.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using zelto::Connection;
using zelto::ConnectionState;
using zelto::ConnectionTable;

// The table never looks into a connection: anything with an address of its own stands for one.
std::shared_ptr<Connection> connection() {
  auto owner = std::make_shared<int>(0);
  return {owner, reinterpret_cast<Connection*>(owner.get())};
}

class ConnectionTableTest : public ::testing::Test {
 protected:
  bool admit(const std::shared_ptr<Connection>& one, const std::string& address = "192.0.2.1", bool is_limited = true) {
    const auto admission = table.admit(one, boost::asio::ip::make_address(address), is_limited);
    gave_way = admission.gives_way;
    if (gave_way) table.remove(gave_way.get());
    return admission.admitted;
  }

  ConnectionTable table{{.in_all = 4, .per_address = 2}};
  std::shared_ptr<Connection> gave_way;
  const std::shared_ptr<Connection> a = connection();
  const std::shared_ptr<Connection> b = connection();
  const std::shared_ptr<Connection> c = connection();
  const std::shared_ptr<Connection> d = connection();
  const std::shared_ptr<Connection> e = connection();
};

TEST_F(ConnectionTableTest, HasTheOneThatWaitsLongestGiveWay) {
  EXPECT_TRUE(admit(a, "192.0.2.1"));
  EXPECT_TRUE(admit(b, "192.0.2.2"));
  EXPECT_TRUE(admit(c, "192.0.2.3"));
  EXPECT_TRUE(admit(d, "192.0.2.4"));
  EXPECT_EQ(nullptr, gave_way);
  table.set_state(a.get(), ConnectionState::busy);
  table.set_state(b.get(), ConnectionState::busy);
  table.set_state(b.get(), ConnectionState::waiting);  // since later than the others
  EXPECT_TRUE(admit(e, "192.0.2.5"));
  EXPECT_EQ(c, gave_way);
  EXPECT_EQ(d, table.take_oldest());
  EXPECT_EQ(b, table.take_oldest());
  EXPECT_EQ(e, table.take_oldest());
  EXPECT_EQ(nullptr, table.take_oldest()) << "the first is being answered";
}

TEST_F(ConnectionTableTest, RefusesWhenAllAreBeingAnswered) {
  int i = 0;
  for (const auto& one : {a, b, c, d}) {
    EXPECT_TRUE(admit(one, "192.0.2." + std::to_string(++i)));
    table.set_state(one.get(), ConnectionState::busy);
  }
  EXPECT_FALSE(admit(e, "192.0.2.5"));
  table.remove(a.get());
  EXPECT_TRUE(admit(e, "192.0.2.5"));
}

TEST_F(ConnectionTableTest, HasTheLongestExchangeGiveWayWhenNobodyWaits) {
  ConnectionTable impatient{{.in_all = 3, .per_address = 0, .exchange = std::chrono::seconds(0)}};
  ConnectionTable patient{{.in_all = 3, .per_address = 0, .exchange = std::chrono::hours(1)}};
  for (ConnectionTable* one : {&impatient, &patient}) {
    for (const auto& some : {a, b, c}) EXPECT_TRUE(one->admit(some, {}, true).admitted);
    one->set_state(b.get(), ConnectionState::exchanging);
    one->set_state(a.get(), ConnectionState::exchanging);
    one->set_state(c.get(), ConnectionState::busy);
  }
  EXPECT_EQ(b, impatient.admit(d, {}, true).gives_way);
  EXPECT_FALSE(patient.admit(d, {}, true).admitted);
}

TEST_F(ConnectionTableTest, LimitsEachAddressToItsOwn) {
  EXPECT_TRUE(admit(a, "192.0.2.9"));
  EXPECT_TRUE(admit(b));
  EXPECT_TRUE(admit(c));
  EXPECT_TRUE(admit(d));
  EXPECT_EQ(b, gave_way) << "not the one of another address, which waits longer";
  table.set_state(c.get(), ConnectionState::busy);
  table.set_state(d.get(), ConnectionState::busy);
  EXPECT_FALSE(admit(e));
  EXPECT_TRUE(admit(e, "192.0.2.1", false)) << "a proxy's, through which many clients come";
}

TEST_F(ConnectionTableTest, CountsAnIpv6NetworkAsOneAddress) {
  EXPECT_TRUE(admit(a, "2001:db8:0:1::1"));
  EXPECT_TRUE(admit(b, "2001:db8:0:1:ffff::2"));
  EXPECT_TRUE(admit(c, "2001:db8:0:2::1"));
  EXPECT_EQ(nullptr, gave_way);
  EXPECT_TRUE(admit(d, "2001:db8:0:1::3"));
  EXPECT_EQ(a, gave_way);
}

TEST_F(ConnectionTableTest, CountsAMappedAddressAsTheOneThatItIs) {
  EXPECT_TRUE(admit(a, "192.0.2.1"));
  EXPECT_TRUE(admit(b, "::ffff:192.0.2.1"));
  EXPECT_TRUE(admit(c, "::ffff:192.0.2.1"));
  EXPECT_EQ(a, gave_way);
}

TEST_F(ConnectionTableTest, IsEmptyOnceAllAreRemoved) {
  EXPECT_TRUE(admit(a));
  EXPECT_EQ(std::vector{a}, table.all());
  EXPECT_FALSE(table.wait_until_empty(std::chrono::milliseconds(0)));
  table.remove(a.get());
  table.remove(a.get());
  EXPECT_TRUE(table.wait_until_empty(std::chrono::milliseconds(0)));
  EXPECT_TRUE(admit(b));
  EXPECT_TRUE(admit(c));
  EXPECT_EQ(nullptr, gave_way) << "its address has room again";
}

}  // namespace
