// The databases that the cases run against: a SQLite file, and a PostgreSQL server of the tests' own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <korlib/activation.h>
#include <korlib/dbcommand.h>

#include "korlib/classes/temporary_folder.h"
#include "support/late_bound.h"

namespace databases {

enum class Kind { kSqlite, kPostgres };

// A connection string to an empty database, made anew for each test.
class Fresh {
 public:
  explicit Fresh(Kind kind);
  ~Fresh();
  const std::wstring& connection_string() const { return connection_string_; }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::wstring connection_string_;
  Kind kind_;
};

// Stops every connection to the server's databases but the caller's own.
void cut_off_clients();

CComPtr<IDispatch> create(REFCLSID clsid);

}  // namespace databases

// Cases for both kinds. The connection is open; tables are the test's own.
class Database : public testing::TestWithParam<databases::Kind> {
 protected:
  void SetUp() override;

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
