// Pages over a PostgreSQL server, and over a file that another connection has locked: they end at their limits,
// whatever the database does.
#include "korlib/database/database_fixture.h"
#include "zelto/site/page_run_fixture.h"

namespace {

using databases::Kind;

class ServerDatabase : public test::PageRunFixture, public testing::WithParamInterface<Kind> {
 protected:
  ServerDatabase() { options.script_timeout = std::chrono::seconds(1); }

  bool is_sqlite() const { return GetParam() == Kind::kSqlite; }
  // Has `c`, an open connection that waits without end.
  std::string page(const std::string& script, const std::string& more = {}) const {
    return "<% var c = Server.CreateObject('ADODB.Connection'); c.Open('" +
           zelto::to_utf8(database_.connection_string()) + more + "'); c.CommandTimeout = 0;" + script + " %>";
  }
  // The page that does it again and again fails with these words; then the next one has its time, and a connection.
  void ends(const std::string& use, const std::string& words, const std::string& more = {}) {
    log.clear();
    EXPECT_EQ(500, run(page("for (;;) try { " + use + " } catch (e) {}", more), "").head.status) << use;
    EXPECT_EQ("/page.asp: " + words, told_of_limit()) << use;
    EXPECT_EQ("5", body(page("Response.Write(c.Execute('SELECT 5')(0).Value)", more))) << use;
  }

  static constexpr const char* kLate = "The page took longer than the site allows. Its limit. (Server, 0x80004004)";
  static constexpr const char* kFull =
      "The page took more memory than the site allows. Its limit. (Server, 0x8007000E)";
  databases::Fresh database_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Both, ServerDatabase, testing::Values(Kind::kSqlite, Kind::kPostgres), database_name);

TEST_P(ServerDatabase, StopsWhatAServerDoesWhenThePageIsLate) {
  if (is_sqlite()) GTEST_SKIP() << "page_database_test has a file's statements";
  ends("c.Execute('SELECT pg_sleep(600)')", kLate);
  ends("c.Execute('SELECT 1; SELECT pg_sleep(600)').NextRecordset()", kLate);
  ends("c.Execute('SELECT generate_series(1, 1000000000000)').GetRows()", kLate, ";UseDeclareFetch=1;Fetch=100");
}

// The driver's own end of the statement comes in the same moment as the engine's look at the time.
TEST_P(ServerDatabase, TellsTheLineOfTheStatementThatWasTooLong) {
  const std::string sql = is_sqlite()
                              ? "WITH RECURSIVE t(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM t) SELECT sum(n) FROM t"
                              : "SELECT pg_sleep(600)";
  EXPECT_EQ(500, run(page("\nfunction slow() {\n  c.Execute('" + sql + "');\n}\nslow();"), "").head.status);
  ASSERT_EQ(1U, log.size());
  EXPECT_EQ(0U, log[0].find("/page.asp:3: The page took longer")) << log[0];
}

TEST_P(ServerDatabase, StopsRowsThatTakeTooMuchMemory) {
  if (is_sqlite()) GTEST_SKIP() << "page_memory_test has a file's rows";
  options.script_timeout = std::chrono::seconds(120);
  options.script_memory = std::size_t{64} << 20;
  const std::string rows = "c.Execute(\"SELECT repeat('x', 1000), generate_series(1, 1000000000)\")";
  ends(rows, kFull);
  ends(rows + ".GetRows()", kFull, ";UseDeclareFetch=1;Fetch=100");
}

// The page's time counts where the command's own is longer, and the other way round.
TEST_P(ServerDatabase, WaitsForALockNoLongerThanThePageOrTheCommandMay) {
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Open", database_.connection_string()).hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Execute", L"CREATE TABLE t (id INTEGER)").hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Execute", L"INSERT INTO t VALUES (1)").hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"BeginTrans").hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Execute", L"UPDATE t SET id = 2").hr);
  ends("c.Execute('UPDATE t SET id = 3')", kLate);
  ends("c.CommandTimeout = 60; c.Execute('UPDATE t SET id = 3')", kLate);
  options.script_timeout = std::chrono::hours(1);
  restart();
  EXPECT_EQ("gave up", body(page("c.CommandTimeout = 1; try { c.Execute('UPDATE t SET id = 3') } catch (e) { "
                                 "Response.Write('gave up') }")));
  ASSERT_EQ(S_OK, test::call(other.get(), L"RollbackTrans").hr);
  EXPECT_EQ("1", body(page("Response.Write(c.Execute('SELECT id FROM t')(0).Value)")));
}

// In this file's journal a reader keeps a writer from committing.
TEST_P(ServerDatabase, WaitsNoLongerToCommitEither) {
  if (!is_sqlite()) GTEST_SKIP() << "a server's readers hold up nobody";
  CComPtr<IDispatch> other = databases::create(CLSID_KorDBConnection);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Open", database_.connection_string() + L";StepAPI=1").hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Execute", L"CREATE TABLE t (id INTEGER)").hr);
  ASSERT_EQ(S_OK, test::call(other.get(), L"Execute", L"INSERT INTO t VALUES (1), (2), (3)").hr);
  const test::Answer rows = test::call(other.get(), L"Execute", L"SELECT id FROM t");
  ASSERT_EQ(S_OK, rows.hr);
  ends("c.CommandTimeout = 60; c.BeginTrans(); c.Execute('INSERT INTO t VALUES (4)'); c.CommitTrans()", kLate);
}

}  // namespace
