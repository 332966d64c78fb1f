#include "base/ordered_table.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/keyed_hash.h"

namespace {

struct Entry {
  std::wstring name;
  std::unique_ptr<int> value;  // entries need not be copied
};

template <class Order>
class OrderedTable : public testing::Test {
 protected:
  using Table = base::OrderedTable<&Entry::name, base::FoldedHash, base::FoldedEqual, Order>;

  void add(const wchar_t* name, int value = 0) { table_.add({name, std::make_unique<int>(value)}); }
  std::wstring names() const {
    std::wstring all;
    for (const Entry& entry : table_) all += entry.name + L" ";
    return all;
  }

  Table table_;
};

using Orders = testing::Types<base::ByLinks, base::ByPlaces>;
TYPED_TEST_SUITE(OrderedTable, Orders);

TYPED_TEST(OrderedTable, FindsEntriesByTheirKeys) {
  EXPECT_TRUE(this->table_.empty());
  this->add(L"One", 1);
  this->add(L"Two", 2);
  EXPECT_EQ(2u, this->table_.size());
  Entry* const two = this->table_.find(std::wstring_view(L"TWO"));
  ASSERT_NE(nullptr, two);
  EXPECT_EQ(L"Two", two->name);
  *two->value = 22;
  const auto& unchangeable = this->table_;
  EXPECT_EQ(22, *unchangeable.find(L"two")->value);
  EXPECT_EQ(nullptr, unchangeable.find(L"three"));
}

TYPED_TEST(OrderedTable, KeepsTheOrderWhileEntriesComeAndGo) {
  for (const wchar_t* name : {L"d", L"b", L"a", L"c"}) this->add(name);
  EXPECT_EQ(L"d b a c ", this->names());
  const Entry taken = this->table_.take(*this->table_.find(L"b"));
  EXPECT_EQ(L"b", taken.name);
  EXPECT_EQ(L"d a c ", this->names());
  this->add(L"b");
  EXPECT_EQ(L"d a c b ", this->names());
}

TYPED_TEST(OrderedTable, GivesAnEntryAnotherKeyInItsPlace) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) this->add(name);
  Entry& entry = *this->table_.find(L"b");
  EXPECT_EQ(L"b", this->table_.rename(entry, L"x"));
  EXPECT_EQ(L"x", this->table_.rename(entry, L"X"));
  EXPECT_EQ(L"a X c ", this->names());
  EXPECT_EQ(nullptr, this->table_.find(L"b"));
  EXPECT_EQ(&entry, this->table_.find(L"x"));
}

TYPED_TEST(OrderedTable, LeavesEntriesWhereTheyAreWhileItGrows) {
  this->add(L"first");
  const Entry* const first = this->table_.find(L"first");
  for (int i = 0; i < 1000; ++i) this->add(std::to_wstring(i).c_str());
  EXPECT_EQ(first, this->table_.find(L"first"));
}

TYPED_TEST(OrderedTable, IsMovedWhole) {
  this->add(L"a");
  auto other = std::move(this->table_);
  EXPECT_EQ(1u, other.size());
  std::swap(other, this->table_);
  EXPECT_EQ(L"a ", this->names());
  EXPECT_TRUE(other.empty());
}

TYPED_TEST(OrderedTable, StaysRightThroughManyChanges) {
  std::vector<std::wstring> expected;
  std::mt19937 random(7);
  for (int step = 0; step < 5000; ++step) {
    const std::wstring name = std::to_wstring(random() % 200);
    const auto place = std::ranges::find(expected, name);
    Entry* const entry = this->table_.find(name);
    ASSERT_EQ(place != expected.end(), entry != nullptr);
    if (!entry) {
      this->add(name.c_str());
      expected.push_back(name);
    } else if (step % 3 == 0) {
      this->table_.rename(*entry, name + L"'" + std::to_wstring(step));
      *place = entry->name;
    } else {
      this->table_.take(*entry);
      expected.erase(place);
    }
  }
  std::wstring all;
  for (const std::wstring& name : expected) all += name + L" ";
  EXPECT_EQ(all, this->names());
}

TEST(OrderedTableByPlaces, FindsTheNthEntry) {
  base::OrderedTable<&Entry::name, base::FoldedHash, base::FoldedEqual, base::ByPlaces> table;
  for (const wchar_t* name : {L"a", L"b", L"c"}) table.add({name, nullptr});
  EXPECT_EQ(L"c", table[2].name);
  table.take(*table.find(L"a"));
  EXPECT_EQ(L"b", table[0].name);
}

}  // namespace
