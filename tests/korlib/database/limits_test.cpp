// What happens when a database is locked, full, slow or gone.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "korlib/database/database_fixture.h"

namespace {

using test::call;
using test::put;

class Limits : public Database {
 protected:
  static constexpr std::uint32_t kTimedOut = 0x80040E31u;
  static std::uint32_t code(const test::Answer& answer) { return static_cast<std::uint32_t>(answer.hr); }
};
BOTH_DATABASES(Limits);

TEST_P(Limits, StopsACommandAtItsTimeout) {
  put(connection(), L"CommandTimeout", 1);
  const wchar_t* endless =
      is_sqlite() ? L"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT COUNT(*) FROM n"
                  : L"SELECT pg_sleep(3600)";
  const test::Answer answer = call(connection(), L"Execute", endless);
  EXPECT_EQ(kTimedOut, code(answer));
  EXPECT_EQ(L"The command took longer than its time-out.", answer.description);
  execute(L"SELECT 1");  // the connection still works
}

TEST_P(Limits, StopsACommandThatWaitsForALock) {
  execute(L"CREATE TABLE t (id INTEGER)");
  execute(L"INSERT INTO t VALUES (1)");
  CComPtr<IDispatch> other = open_another();
  call(other.get(), L"BeginTrans");
  execute_on(other.get(), L"UPDATE t SET id = 2");
  CComPtr<IDispatch> update = command(L"UPDATE t SET id = 3");
  put(update.get(), L"CommandTimeout", 1);
  const test::Answer answer = call(update.get(), L"Execute");
  EXPECT_TRUE(FAILED(answer.hr));
  // SQLite stops waiting in the same second as the host stops the command: whichever is first says so.
  const bool is_locked = is_sqlite() && answer.description.find(L"locked") != std::wstring::npos;
  EXPECT_TRUE(is_locked || code(answer) == kTimedOut) << testing::PrintToString(answer.description);
  call(other.get(), L"RollbackTrans");
  EXPECT_EQ(1, single(L"SELECT id FROM t").lVal);
}

// The database would sleep for as long as the connection string says, and heed no cancellation.
TEST_P(Limits, StopsACommandThatWaitsForALockAsTheConnectionStringSays) {
  if (!is_sqlite()) GTEST_SKIP() << "the word is of SQLite's driver";
  execute(L"CREATE TABLE t (id INTEGER)");
  call(connection(), L"BeginTrans");
  execute(L"INSERT INTO t VALUES (1)");
  const auto attempt = [this](const std::wstring& milliseconds, int seconds) {
    CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
    call(other.get(), L"Open", connection_string() + L";Timeout=" + milliseconds);
    put(other.get(), L"CommandTimeout", seconds);
    const test::Answer answer = call(other.get(), L"Execute", L"BEGIN IMMEDIATE");
    const bool is_locked = answer.description.find(L"locked") != std::wstring::npos || code(answer) == kTimedOut;
    return FAILED(answer.hr) && is_locked;
  };
  EXPECT_TRUE(attempt(L"86400000", 1));
  EXPECT_TRUE(attempt(L"1", 0)) << "without end, but for the connection string";
  call(connection(), L"RollbackTrans");
}

TEST_P(Limits, SaysWhatAConstraintForbids) {
  execute(L"CREATE TABLE t (id INTEGER PRIMARY KEY)");
  execute(L"INSERT INTO t VALUES (1)");
  const test::Answer answer = call(connection(), L"Execute", L"INSERT INTO t VALUES (1)");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(L"", answer.description);
  if (!is_sqlite()) {
    EXPECT_EQ(0x80040E2Fu, code(answer));
  }
}

class SqliteLimits : public Limits {};
INSTANTIATE_TEST_SUITE_P(Only, SqliteLimits, testing::Values(databases::Kind::kSqlite), database_name);

TEST_P(SqliteLimits, SaysWhenTheDatabaseIsFull) {
  execute(L"PRAGMA max_page_count = 10");
  execute(L"CREATE TABLE t (a TEXT)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
  append(insert.get(), 203, 0, CComVariant(std::wstring_view(std::wstring(200'000, L'x'))));
  const test::Answer answer = call(insert.get(), L"Execute");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(std::wstring::npos, answer.description.find(L"full")) << testing::PrintToString(answer.description);
  EXPECT_EQ(VT_NULL, single(L"SELECT MAX(a) FROM t").vt);
}

TEST_P(SqliteLimits, SaysWhenTheFileGoesInTheMiddleOfAResult) {
  execute(
      L"CREATE TABLE t AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
      L"SELECT i, hex(randomblob(1000)) AS words FROM n");
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  ASSERT_EQ(S_OK, call(other.get(), L"Open", connection_string() + L";StepAPI=1").hr);  // a row at a time
  CComPtr<IDispatch> rows = execute_on(other.get(), L"SELECT i, words FROM t");
  EXPECT_EQ(L"1", test::text_of(field(rows.get(), 0)));
  std::filesystem::resize_file(fresh_.folder().path("test.db"), 0);
  test::Answer answer = call(rows.get(), L"MoveNext");
  int seen = 2;
  for (; seen <= 5000 && SUCCEEDED(answer.hr); ++seen) answer = call(rows.get(), L"MoveNext");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_LT(seen, 5000);
  EXPECT_NE(L"", answer.description);
}

TEST_P(SqliteLimits, SaysWhenTheFileIsNoDatabase) {
  fresh_.folder().write("other.db", std::string(5000, 'x'));
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  test::Answer answer = call(other.get(), L"Open", L"Driver=SQLite3;Database=" + fresh_.folder().wide("other.db"));
  if (SUCCEEDED(answer.hr)) answer = call(other.get(), L"Execute", L"SELECT * FROM t");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(L"", answer.description);
}

class PostgresLimits : public Limits {};
INSTANTIATE_TEST_SUITE_P(Only, PostgresLimits, testing::Values(databases::Kind::kPostgres), database_name);

TEST_P(PostgresLimits, SaysWhenTheServerGoesInTheMiddleOfAResult) {
  connection_.reset();
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  ASSERT_EQ(S_OK, call(other.get(), L"Open", connection_string() + L";UseDeclareFetch=1;Fetch=10").hr);
  CComPtr<IDispatch> rows = execute_on(other.get(), L"SELECT generate_series(1, 10000)");
  EXPECT_EQ(1, field(rows.get(), 0).value.lVal);
  databases::cut_off_clients();
  test::Answer answer;
  int seen = 1;
  for (; seen <= 10000 && !at_end(rows.get()); ++seen) {
    answer = call(rows.get(), L"MoveNext");
    if (FAILED(answer.hr)) break;
  }
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_LT(seen, 10000);
  EXPECT_NE(L"", answer.description);
}

// A server that takes the connection and never says a word.
TEST_P(PostgresLimits, StopsConnectingAtTheConnectionsTimeout) {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  const std::string path = fresh_.folder().path(".s.PGSQL.5432").string();
  ASSERT_LT(path.size(), sizeof name.sun_path);
  path.copy(name.sun_path, path.size());
  const int mute = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(0, bind(mute, reinterpret_cast<const sockaddr*>(&name), sizeof name));
  ASSERT_EQ(0, listen(mute, 5));
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  put(other.get(), L"ConnectionTimeout", 1);
  const test::Answer answer =
      call(other.get(), L"Open",
           L"Driver=PostgreSQL Unicode;Port=5432;Servername=" + fresh_.folder().wide("") + L";Username=x;Database=x");
  close(mute);
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(std::wstring::npos, answer.description.find(L"timeout")) << testing::PrintToString(answer.description);
  EXPECT_EQ(0, test::get(other.get(), L"State").value.lVal);
}

TEST_P(PostgresLimits, SaysWhenNobodyAnswers) {
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  const test::Answer answer =
      call(other.get(), L"Open",
           L"Driver=PostgreSQL Unicode;Servername=" + fresh_.folder().wide("") + L";Username=x;Database=x");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(L"", answer.description);
}

}  // namespace
