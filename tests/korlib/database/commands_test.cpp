// What commands, their parameters and connections take, up to their limits.
#include "korlib/database/database_fixture.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;

constexpr LONG kInteger = 3;
constexpr LONG kText = 202;
constexpr LONG kBytes = 204;

class Commands : public Database {
 protected:
  void SetUp() override {
    Database::SetUp();
    execute(L"CREATE TABLE item (id INTEGER, name VARCHAR(100))");
    execute(L"INSERT INTO item VALUES (1, 'one'), (2, 'two')");
  }
  // The names that the command gives with these arguments of Execute.
  template <class... Arguments>
  std::wstring names(IDispatch* command, const Arguments&... arguments) {
    const test::Answer answer = call(command, L"Execute", arguments...);
    if (FAILED(answer.hr)) return text_of(answer);
    std::wstring all;
    const CComPtr<IDispatch> rows = test::object_of(answer);
    for (; !at_end(rows.get()); call(rows.get(), L"MoveNext")) all += text_of(field(rows.get(), L"name")) + L";";
    return all;
  }
  // The parameter of that number.
  static CComPtr<IDispatch> parameter(IDispatch* command, int number) {
    return test::object_of(get(test::object_of(get(command, L"Parameters")).get(), L"Item", number));
  }
  static CComVariant omitted() { return CComVariant(korlib::omitted()); }
};
BOTH_DATABASES(Commands);

TEST_P(Commands, TakeTheirOwnValuesWhereExecuteGivesNone) {
  const CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE id = ? OR name = ?");
  append(query.get(), kInteger, 0, CComVariant(LONG{1}));
  append(query.get(), kText, 50, CComVariant(L"nobody"));
  EXPECT_EQ(L"one;", names(query.get()));
  for (const CComVariant& none : {omitted(), CComVariant(), test::null_value()}) {
    EXPECT_EQ(L"one;", names(query.get(), omitted(), none)) << none.vt;
  }
  const std::vector<CComVariant> second{omitted(), CComVariant(L"two")};
  EXPECT_EQ(L"one;two;", names(query.get(), omitted(), second)) << "an element that is left out";
}

TEST_P(Commands, TellTheThreadsListenerWhichOneWasRefused) {
  struct Listener final : korlib_host::StatementListener {
    Listener() { korlib_host::set_statement_listener(this); }
    ~Listener() { korlib_host::set_statement_listener(nullptr); }
    void on_statement(std::wstring_view, std::chrono::steady_clock::duration) noexcept override {}
    void on_refused(std::wstring_view sql, const std::vector<std::wstring>& parameters,
                    std::wstring_view error) noexcept override {
      told = sql;
      values = parameters;
      words = error;
    }
    std::wstring told;
    std::vector<std::wstring> values;
    std::wstring words;
  } listener;
  EXPECT_EQ(L"one;", names(command(L"SELECT name FROM item WHERE id = 1").get()));
  EXPECT_EQ(L"", listener.told);
  const std::wstring sql = L"INSERT INTO nowhere VALUES (?, ?, ?)";
  const CComPtr<IDispatch> refused = command(sql.c_str());
  append(refused.get(), kInteger, 0, CComVariant(LONG{7}));
  append(refused.get(), kText, 500, CComVariant(std::wstring_view(std::wstring(300, L'x'))));
  append(refused.get(), kText, 50, test::null_value());
  const test::Answer answer = call(refused.get(), L"Execute");
  EXPECT_TRUE(FAILED(answer.hr));
  EXPECT_EQ(sql, listener.told);
  EXPECT_EQ((std::vector<std::wstring>{L"7", L"'" + std::wstring(200, L'x') + L"…'", L"NULL"}), listener.values);
  EXPECT_EQ(answer.description, listener.words);
}

TEST_P(Commands, GiveATableByItsName) {
  for (const LONG type : {2, 512}) {
    const CComPtr<IDispatch> table = command(L"item");
    EXPECT_EQ(S_OK, put(table.get(), L"CommandType", static_cast<int>(type)).hr);
    EXPECT_EQ(L"one;two;", names(table.get())) << type;
  }
}

TEST_P(Commands, HaveTheConnectionsTimeoutUnlessTheyHaveTheirOwn) {
  const CComPtr<IDispatch> made = command(L"SELECT 1");
  put(connection(), L"CommandTimeout", 7);
  EXPECT_EQ(7, get(made.get(), L"CommandTimeout").value.lVal);
  put(made.get(), L"CommandTimeout", 0);
  EXPECT_EQ(0, get(made.get(), L"CommandTimeout").value.lVal) << "without end";
}

TEST_P(Commands, WaitADayAtMost) {
  const CComPtr<IDispatch> made = command(L"SELECT 1");
  const std::pair<IDispatch*, const wchar_t*> timeouts[] = {
      {connection(), L"CommandTimeout"}, {connection(), L"ConnectionTimeout"}, {made.get(), L"CommandTimeout"}};
  for (const auto& [object, name] : timeouts) {
    EXPECT_EQ(S_OK, put(object, name, 86'400).hr);
    EXPECT_TRUE(FAILED(put(object, name, 86'401).hr));
    EXPECT_TRUE(FAILED(put(object, name, -1).hr));
    EXPECT_EQ(86'400, get(object, name).value.lVal);
  }
}

TEST_P(Commands, TakeValuesOfTheWholeSize) {
  execute(is_sqlite() ? L"CREATE TABLE raw (data BLOB)" : L"CREATE TABLE raw (data BYTEA)");
  const CComPtr<IDispatch> text = command(L"UPDATE item SET name = ? WHERE id = 1");
  append(text.get(), kText, 4, CComVariant(L"four"));
  EXPECT_EQ(S_OK, call(text.get(), L"Execute").hr);
  const CComPtr<IDispatch> bytes = command(L"INSERT INTO raw VALUES (?)");
  append(bytes.get(), kBytes, 3, test::value_of(std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_EQ(S_OK, call(bytes.get(), L"Execute").hr);
  put(parameter(bytes.get(), 0).get(), L"Value", std::vector<std::uint8_t>{1, 2, 3, 4});
  EXPECT_EQ(L"Parameter 1: the value is longer than the parameter's Size.", call(bytes.get(), L"Execute").description);
}

TEST_P(Commands, HoldToTheLimitsOfAParameter) {
  const CComPtr<IDispatch> made = command(L"SELECT ?");
  append(made.get(), kInteger, 0, CComVariant(LONG{1}));
  const CComPtr<IDispatch> one = parameter(made.get(), 0);
  for (const wchar_t* name : {L"Precision", L"NumericScale"}) {
    EXPECT_EQ(S_OK, put(one.get(), name, 255).hr);
    EXPECT_TRUE(FAILED(put(one.get(), name, 256).hr));
    EXPECT_TRUE(FAILED(put(one.get(), name, -1).hr));
    EXPECT_EQ(255, get(one.get(), name).value.lVal);
  }
}

TEST_P(Commands, PutPiecesOfAValueTogether) {
  const CComPtr<IDispatch> query = command(L"SELECT name FROM item WHERE name = ?");
  append(query.get(), kText, 50, CComVariant(L"t"));
  const CComPtr<IDispatch> text = parameter(query.get(), 0);
  EXPECT_EQ(S_OK, call(text.get(), L"AppendChunk", L"wo").hr);
  EXPECT_EQ(L"two;", names(query.get()));
  put(text.get(), L"Value", std::vector<std::uint8_t>{1});
  call(text.get(), L"AppendChunk", std::vector<std::uint8_t>{2, 3});
  EXPECT_EQ((std::vector<std::uint8_t>{1, 2, 3}), test::bytes_of(get(text.get(), L"Value")));
  EXPECT_EQ(S_OK, call(text.get(), L"AppendChunk", L"other").hr);
  EXPECT_EQ(L"other", text_of(get(text.get(), L"Value"))) << "of another type, in its place";
}

TEST_P(Commands, LoseTheParameterThatIsDeleted) {
  const CComPtr<IDispatch> made = command(L"SELECT name FROM item WHERE id = ?");
  append(made.get(), kText, 50, CComVariant(L"first"));
  append(made.get(), kInteger, 0, CComVariant(LONG{2}));
  EXPECT_EQ(S_OK, call(test::object_of(get(made.get(), L"Parameters")).get(), L"Delete", 0).hr);
  EXPECT_EQ(L"two;", names(made.get()));
}

TEST_P(Commands, GiveNumbersAsTheyFit) {
  const auto type_of = [this](const wchar_t* sql) { return single(sql).vt; };
  execute(L"CREATE TABLE n (i BIGINT, d NUMERIC(30,4))");
  execute(L"INSERT INTO n VALUES (2147483647, 12345678901.2345)");
  EXPECT_EQ(VT_I4, type_of(L"SELECT i FROM n"));
  EXPECT_EQ(VT_R8, type_of(L"SELECT d FROM n")) << "fifteen digits";
  execute(L"UPDATE n SET i = 2147483648");
  EXPECT_EQ(VT_I8, type_of(L"SELECT i FROM n"));
  execute(L"UPDATE n SET i = -2147483648");
  EXPECT_EQ(VT_I4, type_of(L"SELECT i FROM n"));
  if (is_sqlite()) return;  // keeps no more digits itself
  execute(L"UPDATE n SET d = 123456789012.3456");
  EXPECT_EQ(VT_BSTR, type_of(L"SELECT d FROM n"));
}

TEST_P(Commands, RefuseTextThatIsNoNumberAsADecimal) {
  const CComPtr<IDispatch> update = command(L"UPDATE item SET id = ?");
  append(update.get(), 131, 0, CComVariant(L"1; --"));
  EXPECT_EQ(L"Parameter 1: the value does not fit the parameter's type.", call(update.get(), L"Execute").description);
}

TEST_P(Commands, CountPagesThatAreFull) {
  const CComPtr<IDispatch> rows = open_static(L"SELECT id FROM item ORDER BY id");
  for (const auto& [size, pages] : {std::pair{1, 2}, {2, 1}, {3, 1}}) {
    put(rows.get(), L"PageSize", size);
    EXPECT_EQ(pages, get(rows.get(), L"PageCount").value.lVal) << size;
  }
}

TEST_P(Commands, EndEveryRowOfATextTheLastOneToo) {
  const CComPtr<IDispatch> rows = execute(L"SELECT id, name FROM item ORDER BY id");
  EXPECT_EQ(L"1\tone\r2\ttwo\r", text_of(call(rows.get(), L"GetString")));
}

}  // namespace
