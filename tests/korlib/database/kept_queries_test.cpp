// Queries that stay prepared between pages.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include <korlib_host/database.h>

#include "base/file_stamp.h"
#include "korlib/database/database_fixture.h"

namespace {

using test::call;

// A query stays prepared with its connection; the driver would go on with the columns that it has found first.
class KeptQueries : public Database {
 protected:
  void SetUp() override {
    Database::SetUp();
    execute(L"CREATE TABLE t (id INTEGER)");
  }
  std::filesystem::path file() const { return fresh_.folder().path("test.db"); }
  void reopen() {
    connection_.reset();
    connection_ = open_another();
  }
  static constexpr const wchar_t* kQuery = L"SELECT id FROM t WHERE id >= 0";
  static std::int64_t kept() { return korlib_host::database_handles().kept_queries; }

  // So that the file's time tells of any further change.
  void settle() {
    struct stat status {};
    do {
      std::this_thread::yield();
      ASSERT_EQ(0, ::stat(file().c_str(), &status));
    } while (!base::FileStamp::of(status).is_settled());
    for (int looks = 0; looks < 2; ++looks) reopen();
  }
  // With a value for its one parameter.
  CComPtr<IDispatch> asked(const wchar_t* sql, int value) {
    const CComPtr<IDispatch> command = this->command(sql);
    append(command.get(), 3, 4, CComVariant(value));
    return test::object_of(call(command.get(), L"Execute"));
  }
  // Whatever type the driver takes the column for.
  std::wstring first_as_text() {
    CComVariant value = single(kQuery);
    EXPECT_EQ(S_OK, value.change_type(VT_BSTR));
    return std::wstring(korlib::view_of(value.bstrVal));
  }
  // A connection of the page that writes within microseconds.
  CComPtr<IDispatch> quick_writer() {
    CComPtr<IDispatch> writer = open_another();
    execute_on(writer.get(), L"PRAGMA synchronous = OFF");
    return writer;
  }
  void run_in_another_process(const std::string& sql) {
    ASSERT_EQ(0, std::system(("sqlite3 '" + file().string() + "' '" + sql + "'").c_str()));
  }
};
INSTANTIATE_TEST_SUITE_P(Only, KeptQueries, testing::Values(databases::Kind::kSqlite), database_name);

TEST_P(KeptQueries, StayPreparedWhileTheFileIsUnchanged) {
  settle();
  EXPECT_EQ(0, kept());
  for (int i = 0; i < 3; ++i) {
    execute(kQuery);
    EXPECT_EQ(1, kept());
    reopen();
    EXPECT_EQ(1, kept());
  }
  execute(L"INSERT INTO t VALUES (1)");
  EXPECT_EQ(0, kept());
  EXPECT_EQ(1, single(kQuery).lVal);
}

TEST_P(KeptQueries, AreGivenUpWhenAnotherProcessHasWritten) {
  settle();
  execute(kQuery);
  reopen();
  EXPECT_EQ(1, kept());
  run_in_another_process("INSERT INTO t VALUES (1)");
  reopen();
  EXPECT_EQ(0, kept());
}

TEST_P(KeptQueries, AreOneForEachThatIsRead) {
  settle();
  execute(L"INSERT INTO t VALUES (1)");
  const CComPtr<IDispatch> one = execute(kQuery);
  const CComPtr<IDispatch> other = execute(kQuery);
  EXPECT_EQ(1, field(one.get(), L"id").value.lVal);
  EXPECT_EQ(1, field(other.get(), L"id").value.lVal);
  EXPECT_EQ(0, kept());
}

TEST_P(KeptQueries, TakeTheirParametersAnew) {
  execute(L"INSERT INTO t VALUES (1), (2)");
  settle();
  for (const int wanted : {1, 2, 1}) {
    const CComPtr<IDispatch> rows = asked(L"SELECT id FROM t WHERE id = ?", wanted);
    EXPECT_EQ(wanted, field(rows.get(), L"id").value.lVal);
  }
}

TEST_P(KeptQueries, SeeThatATableIsAnother) {
  settle();
  execute(kQuery);
  run_in_another_process("DROP TABLE t; CREATE TABLE t (name TEXT, id TEXT); INSERT INTO t VALUES (1, 23)");
  reopen();
  EXPECT_EQ(L"23", first_as_text());
  settle();
  execute(kQuery);
  run_in_another_process("DROP TABLE t; CREATE TABLE t (id INTEGER); INSERT INTO t VALUES (7)");
  EXPECT_EQ(L"7", first_as_text()) << "within the page";
  execute(L"ALTER TABLE t ADD COLUMN name TEXT");
  EXPECT_EQ(L"7", first_as_text());
  execute(L"DROP TABLE t");
  EXPECT_TRUE(FAILED(call(connection(), L"Execute", kQuery).hr));
  test::take_error();
}

// The driver asks for the columns' types before the database has looked at its tables again.
TEST_P(KeptQueries, HaveTheTypesOfATableThatAnotherProcessHasMadeAnew) {
  execute(L"INSERT INTO t VALUES (1)");
  settle();
  for (const wchar_t* sql : {kQuery, L"SELECT * FROM t", L"WITH all_of AS (SELECT id FROM t) SELECT id FROM all_of"}) {
    run_in_another_process("DROP TABLE t; CREATE TABLE t (id INTEGER); INSERT INTO t VALUES (1)");
    EXPECT_EQ(VT_I4, single(sql).vt);
    run_in_another_process("DROP TABLE t; CREATE TABLE t (id TEXT); INSERT INTO t VALUES (\"0x\")");
    for (int i = 0; i < 2; ++i) {
      const CComVariant value = single(sql);
      ASSERT_EQ(VT_BSTR, value.vt) << testing::PrintToString(std::wstring(sql));
      EXPECT_EQ(L"0x", korlib::view_of(value.bstrVal));
    }
  }
}

TEST_P(KeptQueries, AreNotThoseForAllColumns) {
  for (const wchar_t* sql : {L"SELECT * FROM t", L"SELECT t.* FROM t"}) {
    execute(sql);
    EXPECT_EQ(0, kept()) << testing::PrintToString(std::wstring(sql));
  }
  execute(L" SELECT COUNT(*) FROM t");
  EXPECT_EQ(1, kept());
}

// The driver takes an expression's type from the first row, and goes on with it.
TEST_P(KeptQueries, GiveAnExpressionTheTypeThatItHasEachTime) {
  execute(L"INSERT INTO t VALUES (7)");
  settle();
  for (const auto& [least, type] : {std::pair(8, VT_NULL), std::pair(7, VT_I4), std::pair(8, VT_NULL)}) {
    const CComPtr<IDispatch> rows = asked(L"SELECT max(id) AS v FROM t WHERE id >= ?", least);
    EXPECT_EQ(type, field(rows.get(), L"v").value.vt) << least;
  }
  EXPECT_EQ(0, kept());
}

TEST_P(KeptQueries, AreThoseThatAskTablesOrCountRows) {
  settle();
  const std::pair<const wchar_t*, int> queries[] = {
      {L"SELECT id AS number FROM t", 1},
      {L"SELECT COUNT(*) AS n FROM t", 1},
      {L"select count(*) from t where id > 1", 1},
      {L"SELECT COUNT(*) FROM t GROUP BY id", 0},
      {L"SELECT COUNT(*) AS n, 'x' AS text FROM t", 0},
      {L"SELECT COUNT(*) AS n FROM t UNION SELECT 'x'", 0},
      {L"SELECT id, id + 1 AS next FROM t", 0},
  };
  for (const auto& [sql, expected] : queries) {
    execute(sql);
    EXPECT_EQ(expected, kept()) << testing::PrintToString(std::wstring(sql));
    execute(L"PRAGMA cache_size");  // gives the others up
  }
}

TEST_P(KeptQueries, AreNotThoseOfARecordsetThatWasOpenWhenItsTableChanged) {
  settle();
  const CComPtr<IDispatch> rows = execute(kQuery);
  execute(L"CREATE TABLE other (id INTEGER)");
  EXPECT_EQ(S_OK, call(rows.get(), L"Close").hr);
  EXPECT_EQ(0, kept());
}

TEST_P(KeptQueries, SeeWhatAnotherConnectionOfThePageHasMadeOfATable) {
  settle();
  const CComPtr<IDispatch> other = quick_writer();
  execute(kQuery);
  EXPECT_EQ(1, kept());
  execute_on(other.get(), L"DROP TABLE t");
  execute_on(other.get(), L"CREATE TABLE t (x INTEGER, ID TEXT)");
  execute_on(other.get(), L"INSERT INTO t VALUES (1, '0x')");
  EXPECT_EQ(VT_BSTR, single(L"SELECT id FROM t LIMIT 1").vt) << "one that is prepared now";
  EXPECT_EQ(L"0x", first_as_text());
}

TEST_P(KeptQueries, SeeWhatATransactionOfAnotherConnectionHasMadeOfATable) {
  settle();
  const CComPtr<IDispatch> other = quick_writer();
  ASSERT_EQ(S_OK, call(other.get(), L"BeginTrans").hr);
  execute_on(other.get(), L"DROP TABLE t");
  execute_on(other.get(), L"CREATE TABLE t (x INTEGER, ID TEXT)");
  execute_on(other.get(), L"INSERT INTO t VALUES (1, '0x')");
  execute(kQuery);  // the database is looked at while it is as it was
  ASSERT_EQ(S_OK, call(other.get(), L"CommitTrans").hr);
  EXPECT_EQ(VT_BSTR, single(L"SELECT id FROM t LIMIT 1").vt);
}

TEST_P(KeptQueries, AreThoseThatWereRunLast) {
  settle();
  for (int i = 0; i < 40; ++i) execute(L"SELECT id FROM t WHERE id = " + std::to_wstring(i));
  EXPECT_EQ(16, kept());
}

TEST_P(KeptQueries, KeepNobodyFromWriting) {
  execute(L"INSERT INTO t VALUES (1), (2)");
  settle();
  const CComPtr<IDispatch> other = quick_writer();
  execute(kQuery);
  EXPECT_EQ(1, kept());
  execute_on(other.get(), L"INSERT INTO t VALUES (3)");
  execute_on(other.get(), L"DROP TABLE t");
}

}  // namespace
