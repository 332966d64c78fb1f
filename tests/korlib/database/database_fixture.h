// The databases that the cases run against: a SQLite file, and a PostgreSQL server of the tests' own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <korlib/activation.h>
#include <korlib/dbcommand.h>
#include <korlib_host/statement_listener.h>

#include "support/late_bound.h"
#include "support/temporary_folder.h"

namespace databases {

enum class Kind { kSqlite, kPostgres };

// A connection string to an empty database, made anew for each test.
class Fresh {
 public:
  explicit Fresh(Kind kind);
  ~Fresh();
  const std::wstring& connection_string() const { return connection_string_; }
  const test::TemporaryFolder& folder() const { return folder_; }

 private:
  test::TemporaryFolder folder_;
  std::wstring connection_string_;
  Kind kind_;
};

// Ends the server's side of every connection.
void cut_off_clients();
// Waits until the server runs a statement that begins so, then ends its side of that connection.
void cut_off_client_running(const std::string& statement);
// The server goes at once, as when its machine fails; and comes back.
void stop_server();
void start_server();

CComPtr<IDispatch> create(REFCLSID clsid);

}  // namespace databases

// Cases for both kinds. The connection is open; tables are the test's own. Each test ends by checking that
// it has left no driver handle open.
class Database : public testing::TestWithParam<databases::Kind> {
 protected:
  void SetUp() override;
  void TearDown() override;

  bool is_sqlite() const { return GetParam() == databases::Kind::kSqlite; }
  const std::wstring& connection_string() const { return fresh_.connection_string(); }
  IDispatch* connection() { return connection_.get(); }
  CComPtr<IDispatch> open_another();
  // Runs a statement that must succeed.
  CComPtr<IDispatch> execute(const std::wstring& sql);
  CComPtr<IDispatch> execute_on(IDispatch* connection, const std::wstring& sql);
  // A recordset with a static cursor.
  CComPtr<IDispatch> open_static(const std::wstring& sql);
  // The first column of the first row.
  CComVariant single(const std::wstring& sql);
  CComPtr<IDispatch> command(const std::wstring& sql);
  void append(IDispatch* command, LONG type, LONG size, const CComVariant& value, LONG direction = 1);

  databases::Fresh fresh_{GetParam()};
  CComPtr<IDispatch> connection_;
};

std::string database_name(const testing::TestParamInfo<databases::Kind>& info);

#define BOTH_DATABASES(Suite)                                                                                  \
  INSTANTIATE_TEST_SUITE_P(Both, Suite, testing::Values(databases::Kind::kSqlite, databases::Kind::kPostgres), \
                           database_name)

// The field's value, through the recordset's default member.
test::Answer field(IDispatch* recordset, const wchar_t* name);
test::Answer field(IDispatch* recordset, int number);
bool at_end(IDispatch* recordset);
