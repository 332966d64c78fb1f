// Which connections are used again, and which are not.
#include <thread>

#include <korlib_host/database.h>

#include "korlib/database/database_fixture.h"

namespace {

using test::call;
using test::get;
using test::put;

class Pool : public Database {
 protected:
  static std::int64_t connections() { return korlib_host::database_handles().connections; }
  void reopen() {
    connection_.reset();
    connection_ = open_another();
  }
};
BOTH_DATABASES(Pool);

TEST_P(Pool, HandsOutAConnectionAgain) {
  execute(L"CREATE TEMPORARY TABLE mine (id INTEGER)");
  reopen();
  execute(L"SELECT * FROM mine");  // known to that connection alone
  EXPECT_EQ(1, connections());
}

// What one page has put there is not another one's.
TEST_P(Pool, DoesNotHandOutADatabaseInMemory) {
  const auto open = [] {
    CComPtr<IDispatch> made = databases::create(CLSID_KorDBConnection);
    EXPECT_EQ(S_OK, call(made.get(), L"Open", L"Driver=SQLite3;Database=:memory:").hr);
    return made;
  };
  CComPtr<IDispatch> memory = open();
  EXPECT_EQ(S_OK, call(memory.get(), L"Execute", L"CREATE TABLE mine (id INTEGER)").hr);
  EXPECT_EQ(S_OK, call(memory.get(), L"Execute", L"SELECT * FROM mine").hr);
  memory.reset();
  memory = open();
  EXPECT_TRUE(FAILED(call(memory.get(), L"Execute", L"SELECT * FROM mine").hr));
}

TEST_P(Pool, KeepsConnectionStringsApart) {
  execute(L"CREATE TEMPORARY TABLE mine (id INTEGER)");
  connection_.reset();
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  ASSERT_EQ(S_OK, call(other.get(), L"Open", connection_string() + L";").hr);
  EXPECT_TRUE(FAILED(call(other.get(), L"Execute", L"SELECT * FROM mine").hr));
  EXPECT_EQ(2, connections());
}

TEST_P(Pool, KeepsThreadsApart) {
  execute(L"CREATE TEMPORARY TABLE mine (id INTEGER)");
  connection_.reset();
  std::thread([this] {
    CComPtr<IDispatch> other = open_another();
    EXPECT_TRUE(FAILED(call(other.get(), L"Execute", L"SELECT * FROM mine").hr));
    EXPECT_EQ(2, connections());
    test::take_error();
  }).join();
  EXPECT_EQ(1, connections()) << "a thread's connections end with it";
}

TEST_P(Pool, KeepsNoMoreThanEightIdle) {
  {
    std::vector<CComPtr<IDispatch>> many;
    for (int i = 0; i < 11; ++i) many.push_back(open_another());
    EXPECT_EQ(12, connections());
  }
  connection_.reset();
  EXPECT_EQ(8, connections());
}

TEST_P(Pool, ClosesWhatHasBeenIdleForLongest) {
  connection_.reset();
  korlib_host::close_idle_connections();
  const std::wstring other_string = connection_string() + L";";
  const auto open_other = [&] {
    CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
    EXPECT_EQ(S_OK, call(other.get(), L"Open", other_string).hr);
    return other;
  };
  for (const int behind : {7, 8}) {
    std::vector<CComPtr<IDispatch>> newer;
    for (int i = 0; i < behind; ++i) newer.push_back(open_another());
    {
      const CComPtr<IDispatch> oldest = open_other();
      execute_on(oldest.get(), L"CREATE TEMPORARY TABLE mine (id INTEGER)");
    }
    newer.clear();
    EXPECT_EQ(8, connections());
    const bool is_kept = SUCCEEDED(call(open_other().get(), L"Execute", L"SELECT * FROM mine").hr);
    EXPECT_EQ(behind == 7, is_kept) << behind;
    korlib_host::close_idle_connections();
  }
}

TEST_P(Pool, DoesNotHandOutATransactionBegunInWords) {
  execute(L"CREATE TABLE t (id INTEGER)");
  for (const wchar_t* begin :
       {L"BEGIN", L" begin", L"-- a remark\n/* ; */ Begin", L"SELECT 1; BEGIN", L"SAVEPOINT s"}) {
    if (is_sqlite() && std::wstring_view(begin) == L"SELECT 1; BEGIN") continue;  // runs one statement at a time
    call(connection(), L"Execute", begin);  // PostgreSQL refuses a savepoint outside a transaction
    execute(L"INSERT INTO t VALUES (1)");
    CComPtr<IDispatch> rows = execute(L"SELECT id FROM t");
    rows.reset();
    reopen();
    EXPECT_EQ(S_OK, call(connection(), L"BeginTrans").hr) << testing::PrintToString(begin);
    execute(L"DELETE FROM t");
    EXPECT_EQ(S_OK, call(connection(), L"CommitTrans").hr) << testing::PrintToString(begin);
  }
}

TEST_P(Pool, DoesNotHandOutSettings) {
  execute(is_sqlite() ? L"PRAGMA query_only = 1" : L"SET default_transaction_read_only = on");
  EXPECT_TRUE(FAILED(call(connection(), L"Execute", L"CREATE TABLE t (id INTEGER)").hr));
  connection_.reset();
  EXPECT_EQ(0, connections());
  connection_ = open_another();
  execute(L"CREATE TABLE t (id INTEGER)");
}

// Whatever stands before the words that change them.
TEST_P(Pool, DoesNotHandOutSettingsThatComeBehindSomething) {
  const std::wstring set = is_sqlite() ? L"PRAGMA query_only = 1" : L"SET default_transaction_read_only = on";
  for (const wchar_t* before : {L"-- a remark\n", L"/* ' */ ", L"SELECT 1; ", L"SELECT ';'; ",
                                L"SELECT (ARRAY[1])[1]; ", L"SELECT 1 -- ;\n; "}) {
    if (is_sqlite() && std::wstring_view(before).starts_with(L"SELECT")) continue;  // one statement at a time
    execute(before + set);
    connection_.reset();
    EXPECT_EQ(0, connections()) << testing::PrintToString(std::wstring(before));
    connection_ = open_another();
  }
}

TEST_P(Pool, KeepsAConnectionWhoseWordsAreOnlyQuoted) {
  execute(L"SELECT '; BEGIN', \"; SET\" FROM (SELECT 1 AS \"; SET\") AS b");
  execute(is_sqlite() ? L"/* BEGIN */ SELECT 1" : L"/* BEGIN */ SELECT 1; -- BEGIN\nSELECT 2");
  connection_.reset();
  EXPECT_EQ(1, connections());
}

TEST_P(Pool, HandsOutAutocommitAndTheTimeoutsOfANewConnection) {
  execute(L"CREATE TABLE t (id INTEGER)");
  put(connection(), L"CommandTimeout", 1);
  put(connection(), L"ConnectionTimeout", 2);
  put(connection(), L"CursorLocation", 3);
  call(connection(), L"BeginTrans");
  reopen();
  EXPECT_EQ(1, connections());
  EXPECT_EQ(30, get(connection(), L"CommandTimeout").value.lVal);
  EXPECT_EQ(15, get(connection(), L"ConnectionTimeout").value.lVal);
  EXPECT_EQ(2, get(connection(), L"CursorLocation").value.lVal);
  execute(L"INSERT INTO t VALUES (1)");  // seen by others at once
  CComPtr<IDispatch> other = open_another();
  EXPECT_FALSE(at_end(execute_on(other.get(), L"SELECT id FROM t").get()));
}

TEST_P(Pool, RollsBackOnlyWhatIsOpenWhenThePageEnds) {
  execute(L"CREATE TABLE t (id INTEGER)");
  CComPtr<IDispatch> other = open_another();
  CComPtr<IDispatch> rows = execute_on(other.get(), L"SELECT 1 UNION SELECT 2");
  call(connection(), L"BeginTrans");
  execute(L"INSERT INTO t VALUES (1)");
  korlib_host::roll_back_transactions();
  EXPECT_TRUE(FAILED(call(connection(), L"CommitTrans").hr));
  EXPECT_EQ(S_OK, call(rows.get(), L"MoveNext").hr);
  execute(L"INSERT INTO t VALUES (2)");
  korlib_host::roll_back_transactions();
  EXPECT_EQ(2, single(L"SELECT MIN(id) FROM t").lVal);
}

TEST_P(Pool, ClosesOnRequest) {
  connection_.reset();
  EXPECT_EQ(1, connections());
  korlib_host::close_idle_connections();
  EXPECT_EQ(0, connections());
}

TEST_P(Pool, EndsStatementsWithTheirConnection) {
  CComPtr<IDispatch> rows = execute(L"SELECT 1 UNION SELECT 2");
  EXPECT_EQ(1, korlib_host::database_handles().statements);
  call(connection(), L"Close");
  EXPECT_EQ(0, korlib_host::database_handles().statements);
  rows.reset();
  connection_ = open_another();
  execute(L"SELECT 1");
}

TEST_P(Pool, KeepsAConnectionOnWhichAStatementFailed) {
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(FAILED(call(connection(), L"Execute", L"SELECT FROM WHERE").hr));
  EXPECT_EQ((korlib_host::DatabaseHandles{1, 0}), korlib_host::database_handles());
  reopen();
  execute(L"SELECT 1");
}

TEST_P(Pool, LeavesNothingOpenWhenConnectingFails) {
  connection_.reset();
  korlib_host::close_idle_connections();
  for (const wchar_t* text : {L"Driver=NoSuchDriver", L"DSN=no such source", L"Driver=SQLite3;Database=/no/such/file",
                              L"Driver=PostgreSQL Unicode;Servername=/no/such/folder;Username=x;Database=x"}) {
    CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
    const test::Answer answer = call(other.get(), L"Open", text);
    EXPECT_TRUE(FAILED(answer.hr)) << testing::PrintToString(text);
    EXPECT_NE(L"", answer.description);
    EXPECT_EQ(0, connections());
  }
}

class FilePool : public Pool {
 protected:
  void SetUp() override {
    Pool::SetUp();
    execute(L"CREATE TABLE t (id INTEGER)");
    connection_.reset();
    ASSERT_EQ(1, connections());
  }
  std::filesystem::path file() const { return fresh_.folder().path("test.db"); }
};
INSTANTIATE_TEST_SUITE_P(Only, FilePool, testing::Values(databases::Kind::kSqlite), database_name);

// Such a connection would read and write what nobody else can see.
TEST_P(FilePool, DoesNotHandOutAConnectionToAFileThatWasReplaced) {
  const std::filesystem::path copy = fresh_.folder().path("copy.db");
  std::filesystem::copy_file(file(), copy);
  std::filesystem::rename(copy, file());
  connection_ = open_another();
  execute(L"INSERT INTO t VALUES (1)");
  connection_.reset();
  korlib_host::close_idle_connections();
  connection_ = open_another();
  EXPECT_EQ(1, single(L"SELECT id FROM t").lVal) << "it is in the new file";
}

TEST_P(FilePool, DoesNotHandOutAConnectionToAFileThatWasRemoved) {
  std::filesystem::remove(file());
  connection_ = open_another();
  execute(L"CREATE TABLE t (id INTEGER)");
  EXPECT_TRUE(std::filesystem::exists(file()));
}

TEST_P(FilePool, DoesNotTakeBackAConnectionWhoseFileWasRemovedMeanwhile) {
  connection_ = open_another();
  std::filesystem::remove(file());
  connection_.reset();
  EXPECT_EQ(0, connections());
}

TEST_P(FilePool, HandsOutAConnectionToAFileThatWasChanged) {
  const auto before = std::filesystem::last_write_time(file());
  std::filesystem::last_write_time(file(), before + std::chrono::hours(1));
  connection_ = open_another();
  EXPECT_EQ(1, connections());
  execute(L"SELECT * FROM t");
}

class ServerPool : public Pool {};
INSTANTIATE_TEST_SUITE_P(Only, ServerPool, testing::Values(databases::Kind::kPostgres), database_name);

TEST_P(ServerPool, DoesNotHandOutAConnectionThatBrokeInUse) {
  databases::cut_off_clients();
  const test::Answer answer = call(connection(), L"Execute", L"SELECT 1");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(L"", answer.description);
  connection_.reset();
  EXPECT_EQ(0, connections());
  connection_ = open_another();
  execute(L"SELECT 1");
}

TEST_P(ServerPool, DoesNotHandOutAConnectionThatBrokeWhileAStatementRan) {
  std::thread other([] { databases::cut_off_client_running("SELECT pg_sleep"); });
  const test::Answer answer = call(connection(), L"Execute", L"SELECT pg_sleep(3600)");
  other.join();
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(L"", answer.description);
  connection_.reset();
  EXPECT_EQ(0, connections());
}

TEST_P(ServerPool, DoesNotHandOutAConnectionThatBrokeInATransaction) {
  ASSERT_EQ(S_OK, call(connection(), L"BeginTrans").hr);
  execute(L"CREATE TABLE t (id INTEGER)");
  databases::cut_off_clients();
  EXPECT_TRUE(FAILED(call(connection(), L"CommitTrans").hr));
  connection_.reset();
  EXPECT_EQ(0, connections());
  connection_ = open_another();
  EXPECT_TRUE(FAILED(call(connection(), L"Execute", L"SELECT * FROM t").hr)) << "it was rolled back";
}

TEST_P(ServerPool, DoesNotHandOutAConnectionThatBrokeWhileIdle) {
  connection_.reset();
  databases::cut_off_clients();
  connection_ = open_another();
  execute(L"SELECT 1");
  EXPECT_EQ(1, connections());
}

TEST_P(ServerPool, SaysThatTheServerIsGoneAndConnectsWhenItIsBack) {
  connection_.reset();
  databases::stop_server();
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  const test::Answer answer = call(other.get(), L"Open", connection_string());
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_NE(std::wstring::npos, answer.description.find(L"[08001, ")) << testing::PrintToString(answer.description);
  EXPECT_EQ(0, connections());
  databases::start_server();
  connection_ = open_another();
  execute(L"SELECT 1");
}

}  // namespace
