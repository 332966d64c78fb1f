#include "korlib/database/database_fixture.h"

namespace {

using test::call;

class Transactions : public Database {
 protected:
  void SetUp() override {
    Database::SetUp();
    execute(L"CREATE TABLE t (id INTEGER)");
  }
  LONG rows() {
    CComVariant count = single(L"SELECT COUNT(*) FROM t");
    EXPECT_EQ(S_OK, count.change_type(VT_I4));
    return count.lVal;
  }
};
BOTH_DATABASES(Transactions);

TEST_P(Transactions, CommitAndRollBack) {
  EXPECT_EQ(1, call(connection(), L"BeginTrans").value.lVal);
  execute(L"INSERT INTO t VALUES (1)");
  EXPECT_EQ(S_OK, call(connection(), L"RollbackTrans").hr);
  EXPECT_EQ(0, rows());
  EXPECT_EQ(S_OK, call(connection(), L"BeginTrans").hr);
  execute(L"INSERT INTO t VALUES (1)");
  EXPECT_EQ(S_OK, call(connection(), L"CommitTrans").hr);
  EXPECT_EQ(1, rows());
  execute(L"INSERT INTO t VALUES (2)");  // by itself again
  connection_ = open_another();
  EXPECT_EQ(2, rows());
}

TEST_P(Transactions, KeepTheirOrder) {
  EXPECT_EQ(L"CommitTrans: no transaction is open.", call(connection(), L"CommitTrans").description);
  EXPECT_EQ(L"RollbackTrans: no transaction is open.", call(connection(), L"RollbackTrans").description);
  call(connection(), L"BeginTrans");
  EXPECT_EQ(L"BeginTrans: a transaction is open already.", call(connection(), L"BeginTrans").description);
}

TEST_P(Transactions, AreRolledBackWhenTheConnectionGoes) {
  for (const bool by_close : {true, false}) {
    CComPtr<IDispatch> other = open_another();
    call(other.get(), L"BeginTrans");
    execute_on(other.get(), L"INSERT INTO t VALUES (1)");
    if (by_close) call(other.get(), L"Close");
    other.reset();
    EXPECT_EQ(0, rows());
  }
}

TEST_P(Transactions, DoNotSurviveInThePool) {
  call(connection(), L"BeginTrans");
  execute(L"INSERT INTO t VALUES (1)");
  connection_.reset();
  connection_ = open_another();  // the same connection, from the pool
  EXPECT_EQ(0, rows());
  EXPECT_TRUE(FAILED(call(connection(), L"CommitTrans").hr));
  execute(L"INSERT INTO t VALUES (2)");
  connection_.reset();
  connection_ = open_another();
  EXPECT_EQ(1, rows());
}

}  // namespace
