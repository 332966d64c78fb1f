#include <limits>

#include "korlib/database/database_fixture.h"

namespace {

using test::text_of;

class Types : public Database {
 protected:
  const wchar_t* bytes_type() const { return is_sqlite() ? L"BLOB" : L"BYTEA"; }
  const wchar_t* bytes_literal() const { return is_sqlite() ? L"x'00ff10'" : L"'\\x00ff10'::bytea"; }
};
BOTH_DATABASES(Types);

TEST_P(Types, ReadsIntegersToSixtyFourBits) {
  execute(L"CREATE TABLE t (a SMALLINT, b INTEGER, c BIGINT)");
  execute(L"INSERT INTO t VALUES (-32768, 2147483647, 9223372036854775807), (1, -2147483648, -9223372036854775808)");
  CComPtr<IDispatch> rows = execute(L"SELECT a, b, c FROM t ORDER BY a");
  EXPECT_EQ(-32768, field(rows.get(), L"a").value.lVal);
  EXPECT_EQ(2147483647, field(rows.get(), L"b").value.lVal);
  const CComVariant most = field(rows.get(), L"c").value;
  EXPECT_EQ(VT_I8, most.vt);
  EXPECT_EQ(INT64_MAX, most.llVal);
  test::call(rows.get(), L"MoveNext");
  EXPECT_EQ(VT_I4, field(rows.get(), L"b").value.vt);
  EXPECT_EQ(INT32_MIN, field(rows.get(), L"b").value.lVal);
  EXPECT_EQ(INT64_MIN, field(rows.get(), L"c").value.llVal);
}

TEST_P(Types, ReadsNullAsNull) {
  execute(
      std::wstring(L"CREATE TABLE t (a INTEGER, b DOUBLE PRECISION, c VARCHAR(20), d TIMESTAMP, e NUMERIC(10,2), f ") +
      bytes_type() + L", g BOOLEAN, h BIGINT, i DATE)");
  execute(L"INSERT INTO t VALUES (NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL)");
  CComPtr<IDispatch> rows = execute(L"SELECT * FROM t");
  for (int i = 0; i < 9; ++i) EXPECT_EQ(VT_NULL, field(rows.get(), i).value.vt) << i;
}

TEST_P(Types, ReadsFractions) {
  execute(L"CREATE TABLE t (a DOUBLE PRECISION, b NUMERIC(10,2), c NUMERIC(30,5))");
  execute(L"INSERT INTO t VALUES (0.1, 12345678.25, 1234567890123456789.12345)");
  CComPtr<IDispatch> rows = execute(L"SELECT a, b, c FROM t");
  EXPECT_EQ(0.1, field(rows.get(), 0).value.dblVal);
  EXPECT_EQ(VT_R8, field(rows.get(), 1).value.vt);
  EXPECT_EQ(12345678.25, field(rows.get(), 1).value.dblVal);
  if (is_sqlite()) return;  // stores long decimals as doubles itself
  EXPECT_EQ(L"1234567890123456789.12345", text_of(field(rows.get(), 2)));
}

TEST_P(Types, ReadsAndWritesBooleans) {
  execute(L"CREATE TABLE t (id INTEGER, b BOOLEAN)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?, ?)");
  append(insert.get(), 3, 0, CComVariant(LONG{1}));
  append(insert.get(), 11, 0, CComVariant(true));
  const test::Answer answer = test::call(insert.get(), L"Execute");
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  execute(is_sqlite() ? L"INSERT INTO t VALUES (2, 0)" : L"INSERT INTO t VALUES (2, false)");
  CComPtr<IDispatch> rows = execute(L"SELECT b FROM t ORDER BY id");
  EXPECT_EQ(VT_BOOL, field(rows.get(), 0).value.vt);
  EXPECT_EQ(VARIANT_TRUE, field(rows.get(), 0).value.boolVal);
  test::call(rows.get(), L"MoveNext");
  EXPECT_EQ(VARIANT_FALSE, field(rows.get(), 0).value.boolVal);
}

TEST_P(Types, ReadsDatesAndTimes) {
  execute(L"CREATE TABLE t (a TIMESTAMP, b DATE, c TIME)");
  execute(L"INSERT INTO t VALUES ('2024-02-29 06:00:00', '1899-12-31', '18:00:00')");
  CComPtr<IDispatch> rows = execute(L"SELECT a, b, c FROM t");
  EXPECT_EQ(VT_DATE, field(rows.get(), 0).value.vt);
  EXPECT_EQ(45351.25, field(rows.get(), 0).value.date);  // counted by hand from 1899-12-30
  EXPECT_EQ(1.0, field(rows.get(), 1).value.date);
  EXPECT_EQ(0.75, field(rows.get(), 2).value.date);
}

TEST_P(Types, WritesDatesThatReadBackTheSame) {
  execute(L"CREATE TABLE t (a TIMESTAMP)");
  for (const double date : {45351.25, 2.0, -1.25, 0.5, 45351.123}) {
    execute(L"DELETE FROM t");
    CComVariant value(date);
    value.vt = VT_DATE;
    CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
    append(insert.get(), 135, 0, value);
    EXPECT_EQ(S_OK, test::call(insert.get(), L"Execute").hr);
    EXPECT_NEAR(date, single(L"SELECT a FROM t").date, 0.001 / 86400) << date;
  }
}

TEST_P(Types, RefusesDatesBeyondTheYearsThatADateHolds) {
  execute(L"CREATE TABLE t (a TIMESTAMP)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
  append(insert.get(), 135, 0, CComVariant());
  CComPtr<IDispatch> moment =
      test::object_of(test::invoke(insert.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {CComVariant(LONG{0})}));
  for (const double date : {2958466.0, 1e8, -657435.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    CComVariant value(date);
    value.vt = VT_DATE;
    EXPECT_EQ(S_OK, test::put(moment.get(), L"Value", value).hr);
    EXPECT_EQ(L"Parameter 1: the value does not fit the parameter's type.",
              test::call(insert.get(), L"Execute").description)
        << date;
  }
  EXPECT_TRUE(at_end(execute(L"SELECT a FROM t").get()));
}

TEST_P(Types, KeepsEveryCharacter) {
  execute(L"CREATE TABLE t (a TEXT)");
  for (const std::wstring text :
       {L"", L"plain", L"'quoted'; DROP TABLE t; --", L"\u00E4\u65E5\u672C", L"\U0001F600x\U00010000", L" \t\r\n ",
        L"\uFEFF\uFFFE", L"\" ' ; -- ? $1 :a {d '2020-01-01'} \\ % _ ` \x01\x7F"}) {
    execute(L"DELETE FROM t");
    CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
    append(insert.get(), 202, 0, CComVariant(std::wstring_view(text)));
    EXPECT_EQ(S_OK, test::call(insert.get(), L"Execute").hr);
    EXPECT_EQ(text, text_of(field(execute(L"SELECT a FROM t").get(), L"A"))) << testing::PrintToString(text);
  }
  EXPECT_EQ(L"\U0001F600", std::wstring(korlib::view_of(single(L"SELECT '\U0001F600'").bstrVal)));
}

TEST_P(Types, ReplacesHalvesOfSurrogatePairs) {
  execute(L"CREATE TABLE t (a TEXT)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
  append(insert.get(), 202, 0, CComVariant(L"a\xD800z\xDC00"));
  EXPECT_EQ(S_OK, test::call(insert.get(), L"Execute").hr);
  EXPECT_EQ(L"a\uFFFDz\uFFFD", text_of(field(execute(L"SELECT a FROM t").get(), 0)));
}

TEST_P(Types, RefusesTextWithNul) {
  execute(L"CREATE TABLE t (a TEXT)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
  append(insert.get(), 203, 0, CComVariant(std::wstring_view(L"a\0b", 3)));
  const test::Answer answer = test::call(insert.get(), L"Execute");
  EXPECT_EQ(0x800A0D5Du, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Parameter 1: the text holds a NUL character.", answer.description);
  EXPECT_TRUE(at_end(execute(L"SELECT a FROM t").get()));
}

TEST_P(Types, ReadsAndWritesBytes) {
  execute(std::wstring(L"CREATE TABLE t (a ") + bytes_type() + L")");
  execute(std::wstring(L"INSERT INTO t VALUES (") + bytes_literal() + L")");
  EXPECT_EQ((std::vector<std::uint8_t>{0, 0xFF, 0x10}), test::bytes_of(field(execute(L"SELECT a FROM t").get(), 0)));
  std::vector<std::uint8_t> all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<std::uint8_t>(i));
  CComPtr<IDispatch> update = command(L"UPDATE t SET a = ?");
  append(update.get(), 204, 0, test::value_of(all));
  EXPECT_EQ(S_OK, test::call(update.get(), L"Execute").hr);
  EXPECT_EQ(all, test::bytes_of(field(execute(L"SELECT a FROM t").get(), 0)));
}

TEST_P(Types, CarriesValuesLargerThanAnyBuffer) {
  execute(std::wstring(L"CREATE TABLE t (a TEXT, b ") + bytes_type() + L")");
  std::wstring text;
  while (text.size() < 5'000'000) text += L"0123456789\u00E4\u65E5\U0001F600";
  std::vector<std::uint8_t> bytes(5'000'001);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 31);
  CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?, ?)");
  append(insert.get(), 203, 0, CComVariant(std::wstring_view(text)));
  append(insert.get(), 205, 0, test::value_of(bytes));
  const test::Answer answer = test::call(insert.get(), L"Execute");
  ASSERT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  CComPtr<IDispatch> rows = execute(L"SELECT a, b FROM t");
  EXPECT_TRUE(text == text_of(field(rows.get(), 0)));
  EXPECT_TRUE(bytes == test::bytes_of(field(rows.get(), 1)));
}

TEST_P(Types, ReadsTextThatEndsAtThePiecesEdge) {
  execute(L"CREATE TABLE t (a TEXT)");
  for (const std::size_t size : {2046u, 2047u, 2048u, 4094u, 4095u}) {
    execute(L"DELETE FROM t");
    for (const wchar_t last : {L'z', L'\U0001F600'}) {
      const std::wstring text = std::wstring(size, L'x') + last + L"end";
      CComPtr<IDispatch> insert = command(L"INSERT INTO t VALUES (?)");
      append(insert.get(), 203, 0, CComVariant(std::wstring_view(text)));
      EXPECT_EQ(S_OK, test::call(insert.get(), L"Execute").hr);
      EXPECT_TRUE(text == text_of(field(execute(L"SELECT a FROM t").get(), 0))) << size;
      execute(L"DELETE FROM t");
    }
  }
}

TEST_P(Types, ReportsColumns) {
  execute(L"CREATE TABLE t (id INTEGER, name VARCHAR(20))");
  CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM t");
  CComPtr<IDispatch> fields = test::object_of(test::get(rows.get(), L"Fields"));
  EXPECT_EQ(2, test::get(fields.get(), L"Count").value.lVal);
  CComPtr<IDispatch> name = test::object_of(test::get(fields.get(), L"Item", 1));
  EXPECT_EQ(L"name", text_of(test::get(name.get(), L"Name")));
  EXPECT_EQ(202, test::get(name.get(), L"Type").value.lVal);
  EXPECT_EQ(20, test::get(name.get(), L"DefinedSize").value.lVal);
  CComPtr<IDispatch> id = test::object_of(test::get(rows.get(), L"Fields", L"ID"));
  EXPECT_EQ(3, test::get(id.get(), L"Type").value.lVal);
}

TEST_P(Types, CountsAsANumber) {
  execute(L"CREATE TABLE t (id INTEGER)");
  execute(L"INSERT INTO t VALUES (1), (2)");
  CComVariant count = single(L"SELECT COUNT(*) FROM t");
  EXPECT_TRUE(count.vt == VT_I4 || count.vt == VT_I8) << count.vt;
  EXPECT_EQ(S_OK, count.change_type(VT_I4));
  EXPECT_EQ(2, count.lVal);
}

TEST_P(Types, KeepsEveryCharacterOfNamesAndErrors) {
  CComPtr<IDispatch> rows = execute(L"SELECT 1 AS \"\u00E4\u65E5\U0001F600\"");
  CComPtr<IDispatch> column = test::object_of(test::get(rows.get(), L"Fields", 0));
  EXPECT_EQ(L"\u00E4\u65E5\U0001F600", text_of(test::get(column.get(), L"Name")));
  const test::Answer answer = test::call(connection(), L"Execute", L"SELECT * FROM \"\u65E5\u672C\"");
  EXPECT_NE(std::wstring::npos, answer.description.find(L"\u65E5\u672C")) << testing::PrintToString(answer.description);
}

class LooseTypes : public Database {};
INSTANTIATE_TEST_SUITE_P(Only, LooseTypes, testing::Values(databases::Kind::kSqlite), database_name);

TEST_P(LooseTypes, GiveValuesThatAreNotOfTheirColumnsType) {
  execute(L"CREATE TABLE t (a INTEGER, b REAL, c TIMESTAMP, d DATE, e DECIMAL(10,2), f BIGINT)");
  for (const wchar_t* values : {L"('word', 'word', 'word', 'word', 'word', 'word')", L"('', '', '', '', '', '')",
                                L"('1 2', '1 2', '1 2', '1 2', '1 2', '1 2')"}) {
    execute(L"DELETE FROM t");
    execute(std::wstring(L"INSERT INTO t VALUES ") + values);
    CComPtr<IDispatch> rows = execute(L"SELECT * FROM t");
    const std::wstring expected = text_of(field(execute(L"SELECT a || '' FROM t").get(), 0));
    for (int i = 0; i < 6; ++i) EXPECT_EQ(expected, text_of(field(rows.get(), i))) << i;
  }
  execute(L"DELETE FROM t");
  execute(L"INSERT INTO t VALUES (1.5, 7, 1580702706, 2458850.5, 1.25, -0.5)");
  CComPtr<IDispatch> rows = execute(L"SELECT * FROM t");
  EXPECT_EQ(1.5, field(rows.get(), 0).value.dblVal);
  EXPECT_EQ(7.0, field(rows.get(), 1).value.dblVal);
  EXPECT_EQ(L"1580702706", text_of(field(rows.get(), 2)));
  EXPECT_EQ(L"2458850.5", text_of(field(rows.get(), 3)));
  EXPECT_EQ(1.25, field(rows.get(), 4).value.dblVal);
  EXPECT_EQ(-0.5, field(rows.get(), 5).value.dblVal);
}

TEST_P(LooseTypes, GiveEveryRowOfAnExpressionItsOwnType) {
  CComPtr<IDispatch> rows = execute(L"SELECT 0 UNION ALL SELECT 2.5 UNION ALL SELECT 'x' UNION ALL SELECT NULL");
  EXPECT_EQ(VT_I4, field(rows.get(), 0).value.vt);
  EXPECT_EQ(S_OK, test::call(rows.get(), L"MoveNext").hr);
  EXPECT_EQ(2.5, field(rows.get(), 0).value.dblVal);
  EXPECT_EQ(S_OK, test::call(rows.get(), L"MoveNext").hr);
  EXPECT_EQ(L"x", text_of(field(rows.get(), 0)));
  EXPECT_EQ(S_OK, test::call(rows.get(), L"MoveNext").hr);
  EXPECT_EQ(VT_NULL, field(rows.get(), 0).value.vt);
}

TEST_P(LooseTypes, GiveDecimalsAsNumbersWithAllTheirDigits) {
  execute(L"CREATE TABLE t (a DECIMAL(20,2), b numeric)");
  execute(L"INSERT INTO t VALUES (2.50, 12345678901234567)");
  CComPtr<IDispatch> rows = execute(L"SELECT a, b FROM t");
  EXPECT_EQ(VT_R8, field(rows.get(), 0).value.vt);
  EXPECT_EQ(2.5, field(rows.get(), 0).value.dblVal);
  EXPECT_EQ(L"12345678901234567", text_of(field(rows.get(), 1)));
}

TEST(SqliteFile, MayHaveAnyName) {
  test::TemporaryFolder folder;
  CComPtr<IDispatch> connection = databases::create(CLSID_KorDBConnection);
  const std::wstring name = L"\u00E4\u65E5\U0001F600.db";
  EXPECT_EQ(S_OK,
            test::call(connection.get(), L"Open", L"Driver={SQLite3};Database=" + folder.wide("") + L"/" + name).hr);
  EXPECT_EQ(S_OK, test::call(connection.get(), L"Execute", L"CREATE TABLE t (a INTEGER)").hr);
  EXPECT_TRUE(std::filesystem::exists(folder.path("\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80.db")));
}

}  // namespace
