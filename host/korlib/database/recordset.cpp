#include "database/recordset.h"

#include "base/letter_case.h"
#include "classes/script_errors.h"
#include "database/command.h"
#include "database/convert.h"
#include "database/fields.h"

namespace korlib {

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

HRESULT Recordset::guarded(const std::function<HRESULT()>& body) {
  if (connection_) return connection_->guarded(kSource, body);
  return body();
}

void Recordset::close_without_rows() {
  if (!result_ || result_->has_columns()) return;
  pending_ = result_->take_statement();
  result_.reset();
}

HRESULT Recordset::Open(VARIANT source, VARIANT connection, LONG cursor_type, LONG lock_type, LONG options) try {
  if (result_) return raise(kObjectOpen, kSource, L"The recordset is open already.");
  if (cursor_type >= 0) RETURN_IF_FAILED(put_CursorType(cursor_type));
  if (lock_type >= 0) RETURN_IF_FAILED(put_LockType(lock_type));
  if (!is_omitted(connection)) RETURN_IF_FAILED(put_ActiveConnection(connection));
  CComPtr<Command> command;
  if (source.vt == VT_DISPATCH || source.vt == VT_UNKNOWN) {
    CComQIPtr<ICommandAccess> access(source.punkVal);
    if (!access) return raise(kInvalidArgument, kSource, L"Open: a command object or a command text is needed.");
    command = access->command();
  } else {
    CComVariant text(source);
    if (!is_omitted(source)) {
      RETURN_IF_FAILED(text.change_type(VT_BSTR));
      source_ = view_of(text.bstrVal);
    }
    if (!connection_) return raise(kInvalidConnection, kSource, L"Open: no connection is given.");
    command = make<Command>();
    RETURN_IF_FAILED(command->use(connection_));
    RETURN_IF_FAILED(command->put_CommandText(CComBSTR(std::wstring_view(source_))));
    if (options >= 0) RETURN_IF_FAILED(command->put_CommandType(options & 0xFF));
  }
  const bool is_kept = cursor_type_ != 0 || cursor_location_ == 3 || (connection_ && connection_->keeps_rows());
  RETURN_IF_FAILED(command->run(is_kept, result_));
  connection_ = command->connection();
  close_without_rows();
  return S_OK;
} catch (...) {
  return hresult_from_exception(kSource);
}

HRESULT Recordset::Close() {
  RETURN_IF_FAILED(need_open());
  result_.reset();
  pending_.reset();
  return S_OK;
}

HRESULT Recordset::get_EOF(VARIANT_BOOL* at_end) {
  *at_end = VARIANT_TRUE;
  RETURN_IF_FAILED(need_open());
  *at_end = result_->is_after_last() ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT Recordset::get_BOF(VARIANT_BOOL* at_start) {
  *at_start = VARIANT_TRUE;
  RETURN_IF_FAILED(need_open());
  *at_start = result_->is_before_first() ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT Recordset::get_State(LONG* state) {
  *state = result_ ? 1 : 0;
  return S_OK;
}

HRESULT Recordset::get_RecordCount(LONG* count) {
  RETURN_IF_FAILED(need_open());
  *count = static_cast<LONG>(result_->size());
  return S_OK;
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
  RETURN_IF_FAILED(need_open());
  RETURN_IF_FAILED(find_column(arguments[0], column));
  result->vt = VT_DISPATCH;
  result->pdispVal = make<Field>(self, column).detach();
  return S_OK;
}

HRESULT Recordset::find_column(const VARIANT& index, std::size_t& column) const {
  RETURN_IF_FAILED(need_open());
  CComVariant wanted;
  RETURN_IF_FAILED(VariantCopyInd(&wanted, &index));
  if (wanted.vt != VT_BSTR) {
    RETURN_IF_FAILED(wanted.change_type(VT_I4));
    if (wanted.lVal >= 0 && static_cast<std::size_t>(wanted.lVal) < columns().size()) {
      column = static_cast<std::size_t>(wanted.lVal);
      return S_OK;
    }
    return raise(kItemNotFound, kSource, L"The recordset has no field " + std::to_wstring(wanted.lVal) + L".");
  }
  const std::wstring_view name = view_of(wanted.bstrVal);
  for (column = 0; column < columns().size(); ++column) {
    if (base::equal_folded(columns()[column].name, name)) return S_OK;
  }
  return raise(kItemNotFound, kSource, L"The recordset has no field \"" + std::wstring(name.substr(0, 100)) + L"\".");
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
  return guarded([this] {
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
  LONG from = 0;  // 0 here, 1 first, 2 last
  if (!is_omitted(start)) {
    CComVariant number;
    RETURN_IF_FAILED(VariantChangeType(&number, &start, 0, VT_I4));
    from = number.lVal;
  }
  if (!result_->is_kept() && from == 0 && rows >= 0) {
    return guarded([&] {
      for (LONG i = 0; i < rows && !result_->is_after_last(); ++i) result_->next();
      return S_OK;
    });
  }
  RETURN_IF_FAILED(need_kept());
  const std::int64_t base = from == 1 ? 0 : from == 2 ? result_->size() - 1 : result_->position();
  return go_to(base + rows);
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
