// ADODB.Recordset.
#pragma once

#include "database/connection.h"

namespace korlib {

class Command;

// A result and a position in it. Forward-only results (CursorType 0, what Execute gives) are read as they
// are walked through; the other cursor types read everything at once and move freely. Read-only.
class Recordset final : public DispatchObject<Recordset> {
 public:
  static constexpr const wchar_t* kClassName = L"Recordset";
  Recordset() = default;
  Recordset(CComPtr<Connection> connection, std::unique_ptr<odbc::ResultSet> result)
      : connection_(std::move(connection)), result_(std::move(result)) {
    close_without_rows();
  }
  static std::span<const Member> members();
  static constexpr std::wstring_view kSource = L"ADODB.Recordset";

  HRESULT Open(VARIANT source, VARIANT connection, LONG cursor_type, LONG lock_type, LONG options);
  HRESULT Close();
  HRESULT get_EOF(VARIANT_BOOL* at_end);
  HRESULT get_BOF(VARIANT_BOOL* at_start);
  HRESULT get_State(LONG* state) { return give(result_ ? ObjectState::open : ObjectState::closed, state); }
  HRESULT get_RecordCount(LONG* count);
  // The fields; with an argument the field of that name or number.
  HRESULT get_Fields(const Arguments& arguments, VARIANT* result);
  HRESULT MoveFirst();
  HRESULT MoveLast();
  HRESULT MoveNext();
  HRESULT MovePrevious();
  HRESULT Move(LONG rows, VARIANT start);
  HRESULT GetRows(LONG rows, VARIANT start, VARIANT fields, VARIANT* array);
  HRESULT GetString(LONG format, LONG rows, VARIANT column_end, VARIANT row_end, BSTR null_text, BSTR* text);
  HRESULT NextRecordset(VARIANT* affected, IDispatch** next);
  HRESULT get_PageSize(LONG* rows) { return give(page_size_, rows); }
  HRESULT put_PageSize(LONG rows);
  HRESULT get_PageCount(LONG* pages);
  HRESULT get_AbsolutePage(LONG* page);
  HRESULT put_AbsolutePage(LONG page);
  HRESULT get_AbsolutePosition(LONG* position);
  HRESULT put_AbsolutePosition(LONG position);
  HRESULT get_CursorType(LONG* type);
  HRESULT put_CursorType(LONG type);
  HRESULT get_CursorLocation(LONG* location) { return give(cursor_location_, location); }
  HRESULT put_CursorLocation(LONG location);
  HRESULT get_LockType(LONG* type) { return give(lock_type_, type); }
  HRESULT put_LockType(LONG type);
  HRESULT get_Source(BSTR* text) { return give(source_, text); }
  HRESULT put_Source(BSTR text) { return keep(text, source_); }
  HRESULT get_ActiveConnection(IDispatch** connection) { return give(connection_.get(), connection); }
  HRESULT put_ActiveConnection(VARIANT connection);

  // For Fields and Field.
  bool is_open() const { return result_ != nullptr; }
  HRESULT need_open() const;
  const std::vector<odbc::Column>& columns() const { return result_->columns(); }
  HRESULT find_column(const VARIANT& index, std::size_t& column) const;
  HRESULT value_of(std::size_t column, VARIANT* value) const;

 private:
  HRESULT need_kept() const;
  HRESULT need_row() const;
  HRESULT go_to(std::int64_t row);
  void close_without_rows();
  HRESULT give_place(std::int64_t place, LONG* out) const;
  template <class Body>
  HRESULT noting_failures(Body body);
  HRESULT command_of(const VARIANT& source, LONG options, CComPtr<Command>& command);
  HRESULT chosen_columns(const VARIANT& fields, std::vector<std::size_t>& chosen) const;

  CComPtr<Connection> connection_;
  std::unique_ptr<odbc::ResultSet> result_;   // null while closed
  std::unique_ptr<odbc::Statement> pending_;  // of a batch whose current result gives no rows
  std::wstring source_;
  CursorType cursor_type_ = CursorType::forward_only;
  CursorLocation cursor_location_ = CursorLocation::server;
  LockType lock_type_ = LockType::read_only;
  LONG page_size_ = 10;
};

// Writes the number of affected rows into the caller's variable.
void put_affected(const odbc::ResultSet& result, VARIANT* affected);

}  // namespace korlib
