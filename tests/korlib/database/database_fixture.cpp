#include "korlib/database/database_fixture.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include <korlib_host/database.h>

namespace databases {
namespace {

// A server on a socket in a folder of its own, running from the first use to the end of the program. It
// refuses to run as root, so root becomes "postgres" or "nobody" for it.
class Server {
 public:
  static Server& instance() {
    static Server only;
    return only;
  }

  ~Server() { stop(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::wstring connection_string() const {
    const std::wstring socket = folder_.path().wstring();
    return L"Driver=PostgreSQL Unicode;Servername=" + socket + L";Port=5432;Username=tester;Database=postgres";
  }
  void start() {
    if (run("pg_ctl", {"-D", data(), "-w", "-l", (folder_.path() / "log").string(), "-o",
                       "-c listen_addresses='' -c fsync=off -k '" + folder_.path().string() + "'", "start"}) != 0) {
      ADD_FAILURE() << "the PostgreSQL server did not start; the package postgresql is needed";
    }
  }
  void stop() const { run("pg_ctl", {"-D", data(), "-m", "immediate", "-w", "stop"}); }
  void sql(const std::string& text) const {
    EXPECT_EQ(0, run("psql", {"-h", folder_.path().string(), "-U", "tester", "-d", "postgres", "-q", "-c",
                              "SET client_min_messages = warning; " + text}))
        << text;
  }

 private:
  Server() {
    if (geteuid() == 0) {
      const passwd* user = getpwnam("postgres");
      if (!user) user = getpwnam("nobody");
      user_ = user ? user->pw_uid : 0;
      if (chown(folder_.path().c_str(), user_, user ? user->pw_gid : 0) != 0) std::abort();
    }
    chmod(folder_.path().c_str(), 0755);
    run("initdb", {"-D", data(), "-U", "tester", "-A", "trust", "-E", "UTF8", "--locale=C.UTF-8", "--no-sync"});
    start();
  }

  std::string data() const { return (folder_.path() / "data").string(); }

  // The newest version's programs, which Debian keeps out of the search path.
  static std::string program(const std::string& name) {
    std::string found = name;
    std::error_code ignored;
    for (const auto& version : std::filesystem::directory_iterator("/usr/lib/postgresql", ignored)) {
      const std::filesystem::path path = version.path() / "bin" / name;
      if (std::filesystem::exists(path)) found = path.string();
    }
    return found;
  }

  int run(const std::string& name, std::vector<std::string> arguments) const {
    std::string path = program(name);
    std::vector<char*> argv{path.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      if (user_ != 0 && setuid(user_) != 0) _exit(126);
      if (chdir("/") != 0) _exit(126);
      if (!freopen("/dev/null", "w", stdout)) _exit(126);
      execvp(argv[0], argv.data());
      _exit(127);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
  }

  test::TemporaryFolder folder_;
  uid_t user_ = 0;
};

}  // namespace

Fresh::Fresh(Kind kind) : kind_(kind) {
  if (kind == Kind::kSqlite) {
    connection_string_ = L"Driver=SQLite3;SyncPragma=OFF;Database=" + folder_.wide("test.db");
  } else {
    connection_string_ = Server::instance().connection_string();
  }
}

Fresh::~Fresh() {
  if (kind_ == Kind::kPostgres) Server::instance().sql("DROP SCHEMA public CASCADE; CREATE SCHEMA public");
}

void cut_off_clients() {
  Server::instance().sql(
      "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE pid <> pg_backend_pid() AND "
      "backend_type = 'client backend'");
}

void cut_off_client_running(const std::string& statement) {
  Server::instance().sql(
      "DO $$ BEGIN LOOP PERFORM pg_terminate_backend(pid) FROM pg_stat_activity WHERE pid <> pg_backend_pid() AND "
      "state = 'active' AND query LIKE '" +
      statement + "%'; EXIT WHEN FOUND; PERFORM pg_stat_clear_snapshot(), pg_sleep(0.01); END LOOP; END $$");
}

void stop_server() { Server::instance().stop(); }
void start_server() { Server::instance().start(); }

CComPtr<IDispatch> create(REFCLSID clsid) {
  CComPtr<IDispatch> object;
  EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.put_void()));
  return object;
}

}  // namespace databases

void Database::SetUp() { connection_ = open_another(); }

void Database::TearDown() {
  connection_.reset();
  EXPECT_EQ(0, korlib_host::database_handles().statements);
  korlib_host::close_idle_connections();
  EXPECT_EQ(0, korlib_host::database_handles().connections);
}

CComPtr<IDispatch> Database::open_another() {
  CComPtr<IDispatch> opened = databases::create(CLSID_KorDBConnection);
  const test::Answer answer = test::call(opened.get(), L"Open", connection_string());
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  return opened;
}

CComPtr<IDispatch> Database::execute_on(IDispatch* connection, const std::wstring& sql) {
  const test::Answer answer = test::call(connection, L"Execute", sql);
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description) << testing::PrintToString(sql);
  return test::object_of(answer);
}

CComPtr<IDispatch> Database::execute(const std::wstring& sql) { return execute_on(connection(), sql); }

CComPtr<IDispatch> Database::open_static(const std::wstring& sql) {
  CComPtr<IDispatch> recordset = databases::create(CLSID_KorDBRecordset);
  const test::Answer answer = test::call(recordset.get(), L"Open", sql, connection_, 3, 1);
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  return recordset;
}

CComVariant Database::single(const std::wstring& sql) { return field(execute(sql).get(), 0).value; }

CComPtr<IDispatch> Database::command(const std::wstring& sql) {
  CComPtr<IDispatch> made = databases::create(CLSID_KorDBCommand);
  EXPECT_EQ(S_OK, test::putref(made.get(), L"ActiveConnection", connection_).hr);
  EXPECT_EQ(S_OK, test::put(made.get(), L"CommandText", sql).hr);
  EXPECT_EQ(S_OK, test::put(made.get(), L"CommandType", 1).hr);
  return made;
}

void Database::append(IDispatch* command, LONG type, LONG size, const CComVariant& value, LONG direction) {
  const test::Answer made = test::call(command, L"CreateParameter", L"", type, direction, size, value);
  EXPECT_EQ(S_OK, made.hr);
  CComPtr<IDispatch> list = test::object_of(test::get(command, L"Parameters"));
  EXPECT_EQ(S_OK, test::call(list.get(), L"Append", made.value).hr);
}

std::string database_name(const testing::TestParamInfo<databases::Kind>& info) {
  return info.param == databases::Kind::kSqlite ? "Sqlite" : "Postgres";
}

namespace {

test::Answer field_value(IDispatch* recordset, const CComVariant& index) {
  test::Answer found = test::invoke(recordset, DISPID_VALUE, DISPATCH_PROPERTYGET, {index});
  if (FAILED(found.hr)) return found;
  return test::invoke(test::object_of(found).get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {});
}

}  // namespace

test::Answer field(IDispatch* recordset, const wchar_t* name) { return field_value(recordset, CComVariant(name)); }
test::Answer field(IDispatch* recordset, int number) { return field_value(recordset, CComVariant(LONG{number})); }

bool at_end(IDispatch* recordset) { return test::is_true(test::get(recordset, L"EOF")); }
