#include "database/recordset.h"

#include <limits>

#include "database/command.h"
#include "database/convert.h"
#include "database/fields.h"

namespace korlib {
namespace {

std::wstring text_or(const VARIANT& value, const wchar_t* otherwise) {
  CComVariant text;
  if (is_omitted(value) || FAILED(VariantChangeType(&text, &value, 0, VT_BSTR))) return otherwise;
  return std::wstring(view_of(text.bstrVal));
}

}  // namespace

std::span<const Member> Recordset::members() {
  static constexpr Member table[] = {
      property<&Recordset::get_Fields>(L"Fields").is_default(),
      method<&Recordset::Open>(L"Open").optional(0, 0, -1, -1, -1),
      method<&Recordset::Close>(L"Close"),
      property<&Recordset::get_EOF>(L"EOF"),
      property<&Recordset::get_BOF>(L"BOF"),
      property<&Recordset::get_State>(L"State"),
      property<&Recordset::get_RecordCount>(L"RecordCount"),
      method<&Recordset::MoveFirst>(L"MoveFirst"),
      method<&Recordset::MoveLast>(L"MoveLast"),
      method<&Recordset::MoveNext>(L"MoveNext"),
      method<&Recordset::MovePrevious>(L"MovePrevious"),
      method<&Recordset::Move>(L"Move").optional(0),
      method<&Recordset::GetRows>(L"GetRows").optional(-1, 0, 0),
      method<&Recordset::GetString>(L"GetString").optional(2, -1, 0, 0, 0),
      method<&Recordset::NextRecordset>(L"NextRecordset").optional(0),
      property<&Recordset::get_PageSize, &Recordset::put_PageSize>(L"PageSize"),
      property<&Recordset::get_PageCount>(L"PageCount"),
      property<&Recordset::get_AbsolutePage, &Recordset::put_AbsolutePage>(L"AbsolutePage"),
      property<&Recordset::get_AbsolutePosition, &Recordset::put_AbsolutePosition>(L"AbsolutePosition"),
      property<&Recordset::get_CursorType, &Recordset::put_CursorType>(L"CursorType"),
      property<&Recordset::get_CursorLocation, &Recordset::put_CursorLocation>(L"CursorLocation"),
      property<&Recordset::get_LockType, &Recordset::put_LockType>(L"LockType"),
      property<&Recordset::get_Source, &Recordset::put_Source>(L"Source"),
      property<&Recordset::get_ActiveConnection, &Recordset::put_ActiveConnection, &Recordset::put_ActiveConnection>(
          L"ActiveConnection"),
  };
  return table;
}

HRESULT Recordset::need_open() const {
  return result_ ? S_OK : raise(kObjectClosed, kSource, L"The recordset is not open.");
}

HRESULT Recordset::need_kept() const {
  RETURN_IF_FAILED(need_open());
  if (result_->is_kept()) return S_OK;
  return raise(kNotSupported, kSource,
               L"A forward-only recordset only moves forward; open it with cursor type 3 (static).");
}

HRESULT Recordset::need_row() const {
  RETURN_IF_FAILED(need_open());
  return result_->current() ? S_OK
                            : raise(kNoCurrentRecord, kSource, L"There is no current record: BOF or EOF is true.");
}

template <class Body>
HRESULT Recordset::noting_failures(Body body) {
  return connection_ ? connection_->noting_failures(kSource, body) : body();
}

void Recordset::close_without_rows() {
  if (!result_ || result_->has_columns()) return;
  pending_ = result_->take_statement();
  result_.reset();
}

HRESULT Recordset::Open(VARIANT source, VARIANT connection, LONG cursor_type, LONG lock_type, LONG options) {
  if (result_) return raise(kObjectOpen, kSource, L"The recordset is open already.");
  if (cursor_type >= 0) RETURN_IF_FAILED(put_CursorType(cursor_type));
  if (lock_type >= 0) RETURN_IF_FAILED(put_LockType(lock_type));
  if (!is_omitted(connection)) RETURN_IF_FAILED(put_ActiveConnection(connection));
  CComPtr<Command> command;
  RETURN_IF_FAILED(command_of(source, options, command));
  const bool is_kept = cursor_type_ != CursorType::forward_only || cursor_location_ == CursorLocation::client ||
                       (connection_ && connection_->keeps_rows());
  RETURN_IF_FAILED(command->run(omitted(), is_kept, result_));
  connection_ = command->connection();
  close_without_rows();
  return S_OK;
}

HRESULT Recordset::command_of(const VARIANT& source, LONG options, CComPtr<Command>& command) {
  if (source.vt == VT_DISPATCH || source.vt == VT_UNKNOWN) {
    CComQIPtr<IObjectAccess<Command>> access(source.punkVal);
    if (!access) return raise(kInvalidArgument, kSource, L"Open: a command object or a command text is needed.");
    command = access->object();
    return S_OK;
  }
  if (!is_omitted(source)) {
    CComVariant text(source);
    RETURN_IF_FAILED(text.change_type(VT_BSTR));
    source_ = view_of(text.bstrVal);
  }
  if (!connection_) return raise(kInvalidConnection, kSource, L"Open: no connection is given.");
  constexpr LONG kCommandTypes = 0xFF;  // of the options, which may tell how to run it as well
  command = make<Command>();
  command->use(connection_);
  RETURN_IF_FAILED(command->put_CommandText(CComBSTR(std::wstring_view(source_))));
  return options >= 0 ? command->put_CommandType(options & kCommandTypes) : S_OK;
}

HRESULT Recordset::Close() {
  RETURN_IF_FAILED(need_open());
  result_.reset();
  pending_.reset();
  return S_OK;
}

HRESULT Recordset::get_EOF(VARIANT_BOOL* at_end) {
  RETURN_IF_FAILED(need_open());
  return give(result_->is_after_last(), at_end);
}

HRESULT Recordset::get_BOF(VARIANT_BOOL* at_start) {
  RETURN_IF_FAILED(need_open());
  return give(result_->is_before_first(), at_start);
}

HRESULT Recordset::get_RecordCount(LONG* count) {
  RETURN_IF_FAILED(need_open());
  return give(static_cast<LONG>(result_->size()), count);
}

HRESULT Recordset::get_Fields(const Arguments& arguments, VARIANT* result) {
  if (arguments.count() > 1) return DISP_E_BADPARAMCOUNT;
  CComPtr<Recordset> self(this);
  if (arguments.count() == 0) {
    result->vt = VT_DISPATCH;
    result->pdispVal = make<Fields>(self).detach();
    return S_OK;
  }
  std::size_t column = 0;
  RETURN_IF_FAILED(find_column(arguments[0], column));
  result->vt = VT_DISPATCH;
  result->pdispVal = make<Field>(self, column).detach();
  return S_OK;
}

HRESULT Recordset::find_column(const VARIANT& index, std::size_t& column) const {
  RETURN_IF_FAILED(need_open());
  const auto name_of = [this](std::size_t place) { return std::wstring_view(columns()[place].name); };
  return find_element(index, columns().size(), name_of, kSource, L"The recordset has no field", column);
}

HRESULT Recordset::value_of(std::size_t column, VARIANT* value) const {
  RETURN_IF_FAILED(need_row());
  return to_variant((*result_->current())[column], value);
}

HRESULT Recordset::go_to(std::int64_t row) {
  RETURN_IF_FAILED(need_kept());
  result_->go_to(row);
  return S_OK;
}

HRESULT Recordset::MoveFirst() {
  RETURN_IF_FAILED(need_open());
  if (!result_->is_kept() && result_->position() == 0) return S_OK;
  return go_to(0);
}

HRESULT Recordset::MoveLast() {
  RETURN_IF_FAILED(need_kept());
  return go_to(result_->size() - 1);
}

HRESULT Recordset::MoveNext() {
  RETURN_IF_FAILED(need_open());
  if (result_->is_after_last()) return need_row();
  return noting_failures([this] {
    result_->next();
    return S_OK;
  });
}

HRESULT Recordset::MovePrevious() {
  RETURN_IF_FAILED(need_kept());
  if (result_->is_before_first()) return need_row();
  return go_to(result_->position() - 1);
}

HRESULT Recordset::Move(LONG rows, VARIANT start) {
  RETURN_IF_FAILED(need_open());
  Bookmark from = Bookmark::current;
  if (!is_omitted(start)) {
    CComVariant number;
    RETURN_IF_FAILED(VariantChangeType(&number, &start, 0, VT_I4));
    from = static_cast<Bookmark>(number.lVal);
  }
  if (!result_->is_kept() && from == Bookmark::current && rows >= 0) {
    return noting_failures([&] {
      for (LONG i = 0; i < rows && !result_->is_after_last(); ++i) result_->next();
      return S_OK;
    });
  }
  RETURN_IF_FAILED(need_kept());
  const std::int64_t base = from == Bookmark::first  ? 0
                            : from == Bookmark::last ? result_->size() - 1
                                                     : result_->position();
  return go_to(base + rows);
}

HRESULT Recordset::chosen_columns(const VARIANT& fields, std::vector<std::size_t>& chosen) const {
  std::vector<CComVariant> wanted;
  RETURN_IF_FAILED(elements_of(fields, wanted));
  if (is_nothing(fields)) {
    for (std::size_t i = 0; i < columns().size(); ++i) chosen.push_back(i);
  }
  for (const CComVariant& field : wanted) RETURN_IF_FAILED(find_column(field, chosen.emplace_back()));
  return S_OK;
}

HRESULT Recordset::GetRows(LONG rows, VARIANT start, VARIANT fields, VARIANT* array) {
  if (!is_omitted(start) && start.vt != VT_EMPTY) RETURN_IF_FAILED(Move(0, start));
  RETURN_IF_FAILED(need_row());
  return noting_failures([&] {
    std::vector<std::size_t> chosen;
    RETURN_IF_FAILED(chosen_columns(fields, chosen));
    return rows_as_array(*result_, rows, chosen, array);
  });
}

HRESULT Recordset::GetString(LONG, LONG rows, VARIANT column_end, VARIANT row_end, BSTR null_text, BSTR* text) {
  RETURN_IF_FAILED(need_row());
  return noting_failures([&] {
    return rows_as_text(*result_, rows,
                        {text_or(column_end, L"\t"), text_or(row_end, L"\r"), std::wstring(view_of(null_text))}, text);
  });
}

HRESULT Recordset::NextRecordset(VARIANT* affected, IDispatch** next) {
  return noting_failures([&] {
    std::unique_ptr<odbc::Statement> statement = result_ ? result_->take_statement() : std::move(pending_);
    const bool is_kept = result_ && result_->is_kept();
    result_.reset();
    if (!statement || !statement->next_result()) return S_OK;
    auto result = std::make_unique<odbc::ResultSet>(std::move(statement), is_kept);
    put_affected(*result, affected);
    *next = make<Recordset>(connection_, std::move(result)).detach();
    return S_OK;
  });
}

HRESULT Recordset::put_PageSize(LONG rows) {
  return choose(rows, 1, std::numeric_limits<LONG>::max(), kSource, L"PageSize is 1 or more.", page_size_);
}

HRESULT Recordset::get_PageCount(LONG* pages) {
  RETURN_IF_FAILED(need_kept());
  return give(static_cast<LONG>((result_->size() + page_size_ - 1) / page_size_), pages);
}

HRESULT Recordset::give_place(std::int64_t place, LONG* out) const {
  if (result_->is_before_first()) return give(Position::before_first, out);
  if (result_->is_after_last()) return give(Position::after_last, out);
  return give(static_cast<LONG>(place), out);
}

HRESULT Recordset::get_AbsolutePage(LONG* page) {
  RETURN_IF_FAILED(need_kept());
  return give_place(result_->position() / page_size_ + 1, page);
}

HRESULT Recordset::put_AbsolutePage(LONG page) {
  LONG pages = 0;
  RETURN_IF_FAILED(get_PageCount(&pages));
  if (page < 1 || page > pages) return raise(kInvalidArgument, kSource, L"AbsolutePage: there is no such page.");
  return go_to(std::int64_t{page - 1} * page_size_);
}

HRESULT Recordset::get_AbsolutePosition(LONG* position) {
  RETURN_IF_FAILED(need_kept());
  return give_place(result_->position() + 1, position);
}

HRESULT Recordset::put_AbsolutePosition(LONG position) {
  RETURN_IF_FAILED(need_kept());
  if (position < 1 || position > result_->size()) {
    return raise(kInvalidArgument, kSource, L"AbsolutePosition: there is no such record.");
  }
  return go_to(position - 1);
}

HRESULT Recordset::get_CursorType(LONG* type) {
  if (!result_) return give(cursor_type_, type);
  return give(result_->is_kept() ? CursorType::snapshot : CursorType::forward_only, type);
}

HRESULT Recordset::put_CursorType(LONG type) {
  if (result_) return raise(kObjectOpen, kSource, L"CursorType can be set only while the recordset is closed.");
  return choose(type, CursorType::forward_only, CursorType::snapshot, kSource,
                L"CursorType is 0 (forward-only) to 3 (static).", cursor_type_);
}

HRESULT Recordset::put_CursorLocation(LONG location) {
  if (result_) return raise(kObjectOpen, kSource, L"CursorLocation can be set only while the recordset is closed.");
  return set_cursor_location(kSource, location, cursor_location_);
}

HRESULT Recordset::put_LockType(LONG type) {
  return choose(type, LockType::read_only, LockType::batch_optimistic, kSource,
                L"LockType is 1 (read-only) to 4 (batch optimistic).", lock_type_);
}

HRESULT Recordset::put_ActiveConnection(VARIANT connection) {
  if (result_) return raise(kObjectOpen, kSource, L"ActiveConnection can be set only while the recordset is closed.");
  return connection_of(connection, kSource, connection_);
}

void put_affected(const odbc::ResultSet& result, VARIANT* affected) {
  if (!affected || is_omitted(*affected)) return;
  if (affected->vt == (VT_BYREF | VT_I4)) {
    *affected->plVal = static_cast<LONG>(result.affected_rows());
    return;
  }
  CComVariant count(static_cast<LONG>(result.affected_rows()));
  VariantCopy(affected, &count);
}

}  // namespace korlib
