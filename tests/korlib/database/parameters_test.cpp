#include "korlib/database/database_fixture.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;

class Parameters : public Database {
 protected:
  void SetUp() override {
    Database::SetUp();
    execute(L"CREATE TABLE item (id INTEGER, name VARCHAR(100), price NUMERIC(12,2))");
    execute(L"INSERT INTO item VALUES (1, 'one', 1.50), (2, 'two', 2.25)");
  }
};
BOTH_DATABASES(Parameters);

TEST_P(Parameters, BindsByPosition) {
  CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE id = ? AND name <> ?");
  append(query.get(), 3, 0, CComVariant(LONG{2}));
  append(query.get(), 202, 50, CComVariant(L"one"));
  CComPtr<IDispatch> rows = test::object_of(call(query.get(), L"Execute"));
  ASSERT_TRUE(rows);
  EXPECT_EQ(L"two", text_of(field(rows.get(), 0)));
  CComPtr<IDispatch> first =
      test::object_of(test::invoke(query.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {CComVariant(LONG{0})}));
  EXPECT_EQ(2, get(first.get(), L"Value").value.lVal);
  EXPECT_EQ(S_OK, put(first.get(), L"Value", 1).hr);
  rows = test::object_of(call(query.get(), L"Execute"));
  EXPECT_TRUE(at_end(rows.get()));
}

TEST_P(Parameters, TakesTheValuesOfAnArray) {
  CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE id = ?");
  const std::vector<CComVariant> values{CComVariant(LONG{1})};
  CComVariant affected;
  CComPtr<IDispatch> rows = test::object_of(call(query.get(), L"Execute", test::by_reference(&affected), values));
  ASSERT_TRUE(rows);
  EXPECT_EQ(L"one", text_of(field(rows.get(), 0)));
}

TEST_P(Parameters, InfersTypesFromValues) {
  CComPtr<IDispatch> insert = command(L"INSERT INTO item VALUES (?, ?, ?)");
  append(insert.get(), 0, 0, CComVariant(LONG{3}));
  append(insert.get(), 0, 0, CComVariant(L"it's; --"));
  append(insert.get(), 0, 0, CComVariant(0.75));
  const test::Answer answer = call(insert.get(), L"Execute");
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  CComPtr<IDispatch> rows = execute(L"SELECT name, price FROM item WHERE id = 3");
  EXPECT_EQ(L"it's; --", text_of(field(rows.get(), 0)));
  EXPECT_EQ(0.75, field(rows.get(), 1).value.dblVal);
}

TEST_P(Parameters, BindsNullOfEveryType) {
  for (const LONG type : {3, 20, 5, 131, 202, 203, 0}) {
    CComPtr<IDispatch> update =
        command(type == 202 || type == 203 || type == 0 ? L"UPDATE item SET name = ? WHERE id = 1"
                : type == 3 || type == 20               ? L"UPDATE item SET id = ? WHERE id = 1"
                                                        : L"UPDATE item SET price = ? WHERE id = 1");
    append(update.get(), type, 0, test::null_value());
    execute(L"DELETE FROM item");
    execute(L"INSERT INTO item VALUES (1, 'one', 1)");
    const test::Answer answer = call(update.get(), L"Execute");
    EXPECT_EQ(S_OK, answer.hr) << type << testing::PrintToString(answer.description);
    CComPtr<IDispatch> rows = execute(L"SELECT * FROM item WHERE id IS NULL OR name IS NULL OR price IS NULL");
    EXPECT_FALSE(at_end(rows.get())) << type;
  }
}

TEST_P(Parameters, ConvertsValuesToTheDeclaredType) {
  CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE id = ?");
  append(query.get(), 3, 0, CComVariant(L" 2 "));
  EXPECT_EQ(L"two", text_of(field(test::object_of(call(query.get(), L"Execute")).get(), 0)));
  CComPtr<IDispatch> bad = command(L"SELECT name FROM item WHERE id = ?");
  append(bad.get(), 3, 0, CComVariant(L"x"));
  const test::Answer answer = call(bad.get(), L"Execute");
  EXPECT_EQ(0x800A0D5Du, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Parameter 1: the value does not fit the parameter's type.", answer.description);
}

TEST_P(Parameters, KeepsToTheDeclaredSize) {
  CComPtr<IDispatch> update = command(L"UPDATE item SET name = ?");
  append(update.get(), 202, 3, CComVariant(L"four"));
  EXPECT_EQ(L"Parameter 1: the value is longer than the parameter's Size.", call(update.get(), L"Execute").description);
}

TEST_P(Parameters, BindsDecimalsExactly) {
  CComPtr<IDispatch> update = command(L"UPDATE item SET price = ? WHERE id = 1");
  append(update.get(), 131, 0, CComVariant(L"1234567890.12"));
  const test::Answer answer = call(update.get(), L"Execute");
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  EXPECT_EQ(1234567890.12, single(L"SELECT price FROM item WHERE id = 1").dblVal);
}

TEST_P(Parameters, BindsDecimalsWrittenForPeople) {
  const struct {
    const wchar_t* text;
    double price;
  } cases[] = {{L"$1,234.50", 1234.5}, {L"(12.25)", -12.25}, {L" .05 ", 0.05},
               {L"&H10", 16},          {L"1.5e2", 150},      {L"0", 0}};
  for (const auto& c : cases) {
    CComPtr<IDispatch> update = command(L"UPDATE item SET price = ? WHERE id = 1");
    append(update.get(), 131, 0, CComVariant(c.text));
    const test::Answer answer = call(update.get(), L"Execute");
    EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
    EXPECT_EQ(c.price, single(L"SELECT price FROM item WHERE id = 1").dblVal) << testing::PrintToString(c.text);
  }
}

TEST_P(Parameters, BindsDatesWrittenForPeople) {
  execute(L"CREATE TABLE moment (t TIMESTAMP)");
  for (const wchar_t* text : {L"7/4/2030 10:30 PM", L"July 4, 2030 22:30", L"4 Jul 2030, 10:30:00 pm"}) {
    execute(L"DELETE FROM moment");
    CComPtr<IDispatch> insert = command(L"INSERT INTO moment VALUES (?)");
    append(insert.get(), 135, 0, CComVariant(text));
    const test::Answer answer = call(insert.get(), L"Execute");
    EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
    EXPECT_EQ(47668.9375, single(L"SELECT t FROM moment").date) << testing::PrintToString(text);
  }
}

TEST_P(Parameters, BindsLargeIntegers) {
  execute(L"CREATE TABLE big (n BIGINT)");
  CComPtr<IDispatch> insert = command(L"INSERT INTO big VALUES (?)");
  append(insert.get(), 20, 0, CComVariant(L"9007199254740993"));
  EXPECT_EQ(S_OK, call(insert.get(), L"Execute").hr);
  EXPECT_EQ(9007199254740993, single(L"SELECT n FROM big").llVal);
}

TEST_P(Parameters, RefusesUnsignedNumbersThatTheTypeDoesNotHold) {
  CComVariant four_bytes;
  four_bytes.vt = VT_UI4;
  four_bytes.ulVal = 0xFFFFFFFF;
  CComVariant eight_bytes;
  eight_bytes.vt = VT_UI8;
  eight_bytes.ullVal = 0xFFFFFFFFFFFFFFFF;
  const struct {
    int type;
    const CComVariant& value;
  } cases[] = {{3, four_bytes}, {3, eight_bytes}, {20, eight_bytes}};
  for (const auto& c : cases) {
    CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE id = ?");
    append(query.get(), c.type, 0, c.value);
    EXPECT_EQ(L"Parameter 1: the value does not fit the parameter's type.", call(query.get(), L"Execute").description);
  }
}

TEST_P(Parameters, GivesOutputBack) {
  if (is_sqlite()) return;  // has no procedures
  execute(L"CREATE FUNCTION twice(n integer) RETURNS integer AS 'SELECT n * 2' LANGUAGE SQL");
  call(connection(), L"Close");  // the driver loses the arguments of a call that the server prepares
  ASSERT_EQ(S_OK, call(connection(), L"Open", connection_string() + L";UseServerSidePrepare=0").hr);
  CComPtr<IDispatch> procedure = command(L"twice");
  put(procedure.get(), L"CommandType", 4);
  append(procedure.get(), 3, 0, CComVariant(), 4);
  append(procedure.get(), 3, 0, CComVariant(LONG{21}));
  const test::Answer answer = call(procedure.get(), L"Execute");
  EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(answer.description);
  CComPtr<IDispatch> list = test::object_of(get(procedure.get(), L"Parameters"));
  CComPtr<IDispatch> returned = test::object_of(get(list.get(), L"Item", 0));
  EXPECT_EQ(42, get(returned.get(), L"Value").value.lVal);
}

TEST_P(Parameters, AreFoundByNameAndNumber) {
  CComPtr<IDispatch> made = command(L"SELECT 1");
  CComPtr<IDispatch> list = test::object_of(get(made.get(), L"Parameters"));
  for (const wchar_t* name : {L"first", L"Second"}) {
    call(list.get(), L"Append", call(made.get(), L"CreateParameter", name, 3).value);
  }
  EXPECT_EQ(2, get(list.get(), L"Count").value.lVal);
  EXPECT_EQ(L"Second", text_of(get(test::object_of(get(list.get(), L"Item", L"SECOND")).get(), L"Name")));
  const test::Answer missing = get(list.get(), L"Item", L"third");
  EXPECT_EQ(0x800A0CC1u, static_cast<std::uint32_t>(missing.hr));
  EXPECT_EQ(L"The command has no parameter \"third\".", missing.description);
  EXPECT_EQ(S_OK, call(list.get(), L"Delete", 0).hr);
  EXPECT_EQ(1, get(list.get(), L"Count").value.lVal);
  EXPECT_TRUE(FAILED(get(list.get(), L"Item", 1).hr));
  EXPECT_TRUE(FAILED(call(made.get(), L"CreateParameter", L"x", 9999).hr));
  EXPECT_TRUE(FAILED(call(made.get(), L"CreateParameter", L"x", 3, 5).hr));
  EXPECT_TRUE(FAILED(call(list.get(), L"Append", made).hr));
}

TEST_P(Parameters, AreSetThroughTheComponentsInterface) {
  CComPtr<IKorDBCommand> made;
  ASSERT_EQ(S_OK, databases::create(CLSID_KorDBCommand).query(made.put()));
  for (const bool by_string : {false, true}) {
    CComVariant where = by_string ? CComVariant(std::wstring_view(connection_string())) : CComVariant(connection());
    EXPECT_EQ(S_OK, made->put_ActiveConnection(where));
    EXPECT_EQ(S_OK, made->put_CommandType(1));
    EXPECT_EQ(S_OK, made->put_CommandText(CComBSTR(L"SELECT name FROM item WHERE id = 2")));
    CComPtr<IDispatch> rows = test::object_of(call(made.get(), L"Execute"));
    ASSERT_TRUE(rows);
    EXPECT_EQ(L"two", text_of(field(rows.get(), L"name")));
  }
  EXPECT_TRUE(FAILED(made->put_ActiveConnection(korlib::long_variant(3))));
  EXPECT_TRUE(FAILED(made->put_CommandType(77)));
}

TEST_P(Parameters, NeedAConnectionAndAText) {
  CComPtr<IDispatch> made = databases::create(CLSID_KorDBCommand);
  EXPECT_EQ(0x800A0E7Du, static_cast<std::uint32_t>(call(made.get(), L"Execute").hr));
  EXPECT_EQ(L"CommandText is empty.", call(command(L"").get(), L"Execute").description);
  CComPtr<IDispatch> too_many = command(L"UPDATE item SET id = ?");
  append(too_many.get(), 3, 0, CComVariant(LONG{1}));
  append(too_many.get(), 3, 0, CComVariant(LONG{2}));
  EXPECT_EQ(L"The command has room for 1 of the 2 values.", call(too_many.get(), L"Execute").description);
  CComPtr<IDispatch> too_few = command(L"SELECT name FROM item WHERE id = ? AND name = ?");
  append(too_few.get(), 3, 0, CComVariant(LONG{1}));
  EXPECT_TRUE(FAILED(call(too_few.get(), L"Execute").hr));
}

}  // namespace
