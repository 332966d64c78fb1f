#include "korlib/database/database_fixture.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;

class Recordset : public Database {
 protected:
  void SetUp() override {
    Database::SetUp();
    execute(L"CREATE TABLE person (id INTEGER, name VARCHAR(40))");
    for (int i = 1; i <= 5; ++i) {
      execute(L"INSERT INTO person VALUES (" + std::to_wstring(i) + L", 'name " + std::to_wstring(i) + L"')");
    }
  }
  static LONG number(IDispatch* object, const wchar_t* name) { return get(object, name).value.lVal; }
  static LONG id(IDispatch* rows) { return field(rows, L"id").value.lVal; }
};
BOTH_DATABASES(Recordset);

TEST_P(Recordset, WalksThroughARowsetOnce) {
  CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM person ORDER BY id");
  EXPECT_EQ(1, number(rows.get(), L"State"));
  EXPECT_EQ(-1, number(rows.get(), L"RecordCount"));
  LONG expected = 0;
  EXPECT_EQ(S_OK, call(rows.get(), L"MoveFirst").hr);  // still there
  for (; !at_end(rows.get()); call(rows.get(), L"MoveNext")) {
    EXPECT_EQ(++expected, id(rows.get()));
    EXPECT_EQ(L"name " + std::to_wstring(expected), text_of(field(rows.get(), L"NAME")));
  }
  EXPECT_EQ(5, expected);
  const test::Answer beyond = call(rows.get(), L"MoveNext");
  EXPECT_EQ(0x800A0BCDu, static_cast<std::uint32_t>(beyond.hr));
  EXPECT_EQ(L"There is no current record: BOF or EOF is true.", field(rows.get(), 0).description);
  EXPECT_TRUE(FAILED(call(rows.get(), L"MoveFirst").hr));
  EXPECT_EQ(S_OK, call(rows.get(), L"Close").hr);
  EXPECT_EQ(0x800A0E78u, static_cast<std::uint32_t>(get(rows.get(), L"EOF").hr));
  EXPECT_EQ(0, number(rows.get(), L"State"));
}

TEST_P(Recordset, IsEmptyAtBothEnds) {
  CComPtr<IDispatch> rows = execute(L"SELECT * FROM person WHERE id > 100");
  EXPECT_TRUE(at_end(rows.get()));
  EXPECT_TRUE(test::is_true(get(rows.get(), L"BOF")));
  EXPECT_TRUE(FAILED(field(rows.get(), L"id").hr));
}

TEST_P(Recordset, IsClosedForAStatementWithoutRows) {
  CComVariant affected;
  const test::Answer answer =
      call(connection(), L"Execute", L"UPDATE person SET name = 'x' WHERE id < 4", test::by_reference(&affected));
  ASSERT_EQ(S_OK, answer.hr);
  EXPECT_EQ(3, affected.lVal);
  EXPECT_EQ(0, number(test::object_of(answer).get(), L"State"));
  call(connection(), L"Execute", L"DELETE FROM person WHERE id > 100", test::by_reference(&affected));
  EXPECT_EQ(0, affected.lVal);
}

TEST_P(Recordset, MovesFreelyWithAStaticCursor) {
  CComPtr<IDispatch> rows = open_static(L"SELECT id, name FROM person ORDER BY id");
  EXPECT_EQ(5, number(rows.get(), L"RecordCount"));
  EXPECT_EQ(3, number(rows.get(), L"CursorType"));
  call(rows.get(), L"MoveLast");
  EXPECT_EQ(5, id(rows.get()));
  call(rows.get(), L"MovePrevious");
  EXPECT_EQ(4, id(rows.get()));
  call(rows.get(), L"Move", -2);
  EXPECT_EQ(2, id(rows.get()));
  call(rows.get(), L"Move", 2, 1);
  EXPECT_EQ(3, id(rows.get()));
  call(rows.get(), L"MoveFirst");
  EXPECT_EQ(1, id(rows.get()));
  call(rows.get(), L"MovePrevious");
  EXPECT_TRUE(test::is_true(get(rows.get(), L"BOF")));
  EXPECT_TRUE(FAILED(call(rows.get(), L"MovePrevious").hr));
  call(rows.get(), L"MoveNext");
  EXPECT_EQ(1, id(rows.get()));
}

TEST_P(Recordset, Pages) {
  CComPtr<IDispatch> rows = open_static(L"SELECT id FROM person ORDER BY id");
  EXPECT_EQ(S_OK, put(rows.get(), L"PageSize", 2).hr);
  EXPECT_EQ(3, number(rows.get(), L"PageCount"));
  EXPECT_EQ(S_OK, put(rows.get(), L"AbsolutePage", 2).hr);
  EXPECT_EQ(3, id(rows.get()));
  EXPECT_EQ(2, number(rows.get(), L"AbsolutePage"));
  EXPECT_EQ(3, number(rows.get(), L"AbsolutePosition"));
  EXPECT_EQ(S_OK, put(rows.get(), L"AbsolutePosition", 5).hr);
  EXPECT_EQ(5, id(rows.get()));
  EXPECT_TRUE(FAILED(put(rows.get(), L"AbsolutePage", 4).hr));
  EXPECT_TRUE(FAILED(put(rows.get(), L"AbsolutePosition", 0).hr));
}

TEST_P(Recordset, GivesRowsAsAnArray) {
  CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM person ORDER BY id");
  call(rows.get(), L"MoveNext");
  const test::Answer some = call(rows.get(), L"GetRows", 2);
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, some.value.vt);
  LONG last_field = 0;
  LONG last_row = 0;
  EXPECT_EQ(S_OK, SafeArrayGetUBound(some.value.parray, 1, &last_field));
  EXPECT_EQ(S_OK, SafeArrayGetUBound(some.value.parray, 2, &last_row));
  EXPECT_EQ(1, last_field);
  EXPECT_EQ(1, last_row);
  const LONG at[] = {1, 1};  // field, row
  CComVariant element;
  EXPECT_EQ(S_OK, SafeArrayGetElement(some.value.parray, at, element.put()));
  EXPECT_EQ(L"name 3", korlib::view_of(element.bstrVal));
  EXPECT_EQ(4, id(rows.get()));
  const test::Answer rest = call(rows.get(), L"GetRows", -1, CComVariant(korlib::omitted()), L"id");
  EXPECT_EQ(S_OK, SafeArrayGetUBound(rest.value.parray, 2, &last_row));
  EXPECT_EQ(1, last_row);
  EXPECT_TRUE(at_end(rows.get()));
  EXPECT_TRUE(FAILED(call(rows.get(), L"GetRows").hr));
}

TEST_P(Recordset, GivesRowsAsText) {
  execute(L"UPDATE person SET name = NULL WHERE id = 2");
  CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM person WHERE id < 4 ORDER BY id");
  EXPECT_EQ(L"1|name 1;2|none;3|name 3;", text_of(call(rows.get(), L"GetString", 2, -1, L"|", L";", L"none")));
}

TEST_P(Recordset, NamesAFieldThatIsMissing) {
  CComPtr<IDispatch> rows = execute(L"SELECT id FROM person");
  const test::Answer answer = field(rows.get(), L"nothing");
  EXPECT_EQ(0x800A0CC1u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"The recordset has no field \"nothing\".", answer.description);
  EXPECT_TRUE(FAILED(field(rows.get(), 1).hr));
  EXPECT_TRUE(FAILED(field(rows.get(), -1).hr));
}

TEST_P(Recordset, FindsAFieldInAnyLetterCase) {
  CComPtr<IDispatch> rows = execute(L"SELECT 7 AS \"Gr\u00F6\u00DFe\", 8 AS \"\u0416x\", 9 AS id, 10 AS \"ID\"");
  EXPECT_EQ(7, field(rows.get(), L"GR\u00D6\u00DFE").value.lVal);
  EXPECT_EQ(8, field(rows.get(), L"\u0436X").value.lVal);
  EXPECT_EQ(9, field(rows.get(), L"Id").value.lVal) << "the first of two";
}

TEST_P(Recordset, EnumeratesItsFields) {
  CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM person");
  CComPtr<IDispatch> fields = test::object_of(get(rows.get(), L"Fields"));
  const test::Answer answer = test::invoke(fields.get(), DISPID_NEWENUM, DISPATCH_PROPERTYGET, {});
  CComQIPtr<IEnumVARIANT> values(answer.value.punkVal);
  ASSERT_TRUE(values);
  CComVariant item;
  ASSERT_EQ(S_OK, values->Next(1, item.put(), nullptr));
  ASSERT_EQ(S_OK, values->Next(1, item.put(), nullptr));
  EXPECT_EQ(L"name", text_of(get(item.pdispVal, L"Name")));
  EXPECT_EQ(S_FALSE, values->Next(1, item.put(), nullptr));
}

TEST_P(Recordset, LetsRecordsetsNestOnOneConnection) {
  CComPtr<IDispatch> outer = execute(L"SELECT id FROM person ORDER BY id");
  LONG sum = 0;
  for (; !at_end(outer.get()); call(outer.get(), L"MoveNext")) {
    CComPtr<IDispatch> inner = execute(L"SELECT name FROM person WHERE id = " + std::to_wstring(id(outer.get())));
    EXPECT_EQ(L"name " + std::to_wstring(id(outer.get())), text_of(field(inner.get(), 0)));
    sum += id(outer.get());
  }
  EXPECT_EQ(15, sum);
}

TEST_P(Recordset, OpensFromACommandAndFromAConnectionString) {
  CComPtr<IDispatch> rows = databases::create(CLSID_KorDBRecordset);
  EXPECT_EQ(S_OK, call(rows.get(), L"Open", command(L"SELECT id FROM person ORDER BY id DESC")).hr);
  EXPECT_EQ(5, id(rows.get()));
  CComPtr<IDispatch> own = databases::create(CLSID_KorDBRecordset);
  EXPECT_EQ(S_OK, call(own.get(), L"Open", L"person", connection_string(), 3, 1, 2).hr);
  EXPECT_EQ(5, number(own.get(), L"RecordCount"));
  EXPECT_TRUE(FAILED(call(own.get(), L"Open", L"person", connection_).hr));
}

TEST_P(Recordset, KeepsItsConnectionAlive) {
  CComPtr<IDispatch> rows = execute(L"SELECT id FROM person ORDER BY id");
  connection_.reset();
  EXPECT_EQ(S_OK, call(rows.get(), L"MoveNext").hr);
  EXPECT_EQ(2, id(rows.get()));
}

TEST_P(Recordset, EndsWithItsConnection) {
  CComPtr<IDispatch> rows = execute(L"SELECT id FROM person ORDER BY id");
  EXPECT_EQ(S_OK, call(connection(), L"Close").hr);
  const test::Answer answer = call(rows.get(), L"MoveNext");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(L"The connection was closed.", answer.description);
}

TEST_P(Recordset, RefusesToWriteFields) {
  CComPtr<IDispatch> rows = execute(L"SELECT id FROM person");
  CComPtr<IDispatch> column = test::object_of(get(rows.get(), L"Fields", L"id"));
  EXPECT_EQ(L"Records are read-only; change them with a command.", put(column.get(), L"Value", 1).description);
}

}  // namespace
