// Opening and closing connections, what connection strings mean, and what a connection tells of errors.
#include "korlib/database/database_fixture.h"

#include <korlib_host/diagnostics.h>

namespace {

using test::call;
using test::get;
using test::put;

class Connections : public Database {};
BOTH_DATABASES(Connections);

TEST_P(Connections, OpenAndClose) {
  EXPECT_EQ(1, get(connection(), L"State").value.lVal);
  EXPECT_TRUE(FAILED(call(connection(), L"Open", connection_string()).hr));
  EXPECT_EQ(S_OK, call(connection(), L"Close").hr);
  EXPECT_EQ(0, get(connection(), L"State").value.lVal);
  EXPECT_EQ(0x800A0E78u, static_cast<std::uint32_t>(call(connection(), L"Close").hr));
  EXPECT_EQ(L"The connection is not open.", call(connection(), L"Execute", L"SELECT 1").description);
  EXPECT_EQ(S_OK, put(connection(), L"ConnectionString", connection_string()).hr);
  EXPECT_EQ(S_OK, call(connection(), L"Open").hr);
  EXPECT_EQ(connection_string(), test::text_of(get(connection(), L"ConnectionString")));
}

TEST_P(Connections, HaveTheDocumentedTimeouts) {
  EXPECT_EQ(30, get(connection(), L"CommandTimeout").value.lVal);
  EXPECT_EQ(15, get(connection(), L"ConnectionTimeout").value.lVal);
  EXPECT_EQ(S_OK, put(connection(), L"CommandTimeout", 0).hr);
  EXPECT_TRUE(FAILED(put(connection(), L"CommandTimeout", -1).hr));
}

TEST_P(Connections, TellWhatTheDatabaseSaid) {
  const test::Answer answer = call(connection(), L"Execute", L"SELECT * FROM no_such_table");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(L"ADODB.Connection", answer.source);
  EXPECT_NE(std::wstring::npos, answer.description.find(L"no_such_table"));
  CComPtr<IDispatch> errors = test::object_of(get(connection(), L"Errors"));
  ASSERT_EQ(1, get(errors.get(), L"Count").value.lVal);
  CComPtr<IDispatch> error =
      test::object_of(test::invoke(errors.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {CComVariant(LONG{0})}));
  EXPECT_EQ(5u, test::text_of(get(error.get(), L"SQLState")).size());
  if (!is_sqlite()) {
    EXPECT_EQ(L"42P01", test::text_of(get(error.get(), L"SQLState")));
  }
  const LONG native = get(error.get(), L"NativeError").value.lVal;
  EXPECT_NE(0, native);
  EXPECT_EQ(answer.description, test::text_of(get(error.get(), L"Description")) + L" [" +
                                    test::text_of(get(error.get(), L"SQLState")) + L", " + std::to_wstring(native) +
                                    L"]");
  EXPECT_EQ(answer.hr, get(error.get(), L"Number").value.lVal);
  EXPECT_TRUE(FAILED(get(errors.get(), L"Item", 1).hr));
  execute(L"SELECT 1");
  EXPECT_EQ(0, get(errors.get(), L"Count").value.lVal);
}

TEST_P(Connections, RefuseTextWithNulAndNoTextAtAll) {
  EXPECT_EQ(L"Execute: the command text is empty.", call(connection(), L"Execute", L"").description);
  EXPECT_EQ(L"The command text holds a NUL character.",
            call(connection(), L"Execute", std::wstring(L"SELECT 1\0; DROP", 15)).description);
}

TEST_P(Connections, LeaveNothingBehind) {
  const auto before = korlib_host::live_objects();
  {
    CComPtr<IDispatch> other = open_another();
    CComPtr<IDispatch> rows = execute_on(other.get(), L"SELECT 1");
    field(rows.get(), 0);
    get(other.get(), L"Errors");
  }
  test::take_error();
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST(ConnectionStrings, SaysWhatItCannotConnectTo) {
  struct Row {
    const wchar_t* connection_string;
    const wchar_t* said;
  };
  const Row rows[] = {
      {L"Driver=NoSuchDriver;Database=x;UID=me;PWD=secret", L" (Driver=NoSuchDriver, Database=x) [01000, 0]"},
      {L"DSN=no such source;Password=secret", L" (DSN=no such source) [IM002, 0]"},
      {L"no such source", L" (DSN=no such source) [IM002, 0]"},
      {L"Database=x", L" (Database=x) [IM002, 0]"},
      {L"x=y", L" (the connection string names neither Driver nor DSN) [IM002, 0]"},
      {L"driver={SQLite3};database={/no/such/a;b.db}", L" (Driver=SQLite3, Database=/no/such/a;b.db) [HY000, 14]"},
  };
  for (const Row& row : rows) {
    CComPtr<IDispatch> connection = databases::create(CLSID_KorDBConnection);
    const test::Answer answer = call(connection.get(), L"Open", row.connection_string);
    EXPECT_TRUE(FAILED(answer.hr));
    EXPECT_TRUE(answer.description.ends_with(row.said)) << testing::PrintToString(answer.description);
    EXPECT_EQ(std::wstring::npos, answer.description.find(L"secret"));
    EXPECT_EQ(0, get(connection.get(), L"State").value.lVal);
    EXPECT_EQ(1, get(test::object_of(get(connection.get(), L"Errors")).get(), L"Count").value.lVal);
  }
  EXPECT_EQ(L"Open: a connection string is needed.",
            call(databases::create(CLSID_KorDBConnection).get(), L"Open").description);
}

// What would end its braces is doubled, so that no attribute begins in it.
TEST(ConnectionStrings, KeepAPasswordInItsBraces) {
  const CComPtr<IDispatch> connection = databases::create(CLSID_KorDBConnection);
  const test::Answer answer = call(connection.get(), L"Open", L"Driver=NoSuchDriver", L"me", L"x};Database=other;y={");
  EXPECT_NE(std::wstring::npos, answer.description.find(L"(Driver=NoSuchDriver)"))
      << testing::PrintToString(answer.description);
}

TEST(ConnectionStrings, ReadABraceThatIsDoubled) {
  const CComPtr<IDispatch> connection = databases::create(CLSID_KorDBConnection);
  const test::Answer answer = call(connection.get(), L"Open", L"Driver=NoSuchDriver;DATABASE={a}}b;c};Server=s");
  EXPECT_NE(std::wstring::npos, answer.description.find(L"(Driver=NoSuchDriver, Server=s, Database=a}b;c)"))
      << testing::PrintToString(answer.description);
}

}  // namespace
