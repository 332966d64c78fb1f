// Many rows at a time, pages, and the settings of a recordset.
#include <algorithm>

#include "classes/script_errors.h"
#include "database/convert.h"
#include "database/recordset.h"

namespace korlib {
namespace {

std::wstring text_or(const VARIANT& value, const wchar_t* otherwise) {
  CComVariant text;
  if (is_omitted(value) || FAILED(VariantChangeType(&text, &value, 0, VT_BSTR))) return otherwise;
  return std::wstring(view_of(text.bstrVal));
}

}  // namespace

HRESULT Recordset::chosen_columns(const VARIANT& fields, std::vector<std::size_t>& chosen) const {
  if (is_omitted(fields) || fields.vt == VT_EMPTY || fields.vt == VT_NULL) {
    for (std::size_t i = 0; i < columns().size(); ++i) chosen.push_back(i);
    return S_OK;
  }
  std::size_t column = 0;
  if (fields.vt != (VT_ARRAY | VT_VARIANT)) {
    RETURN_IF_FAILED(find_column(fields, column));
    chosen.push_back(column);
    return S_OK;
  }
  if (!fields.parray || fields.parray->cDims != 1) return DISP_E_TYPEMISMATCH;
  const auto* elements = static_cast<const VARIANT*>(fields.parray->pvData);
  for (ULONG i = 0; i < fields.parray->rgsabound[0].cElements; ++i) {
    RETURN_IF_FAILED(find_column(elements[i], column));
    chosen.push_back(column);
  }
  return S_OK;
}

HRESULT Recordset::GetRows(LONG rows, VARIANT start, VARIANT fields, VARIANT* array) {
  if (!is_omitted(start) && start.vt != VT_EMPTY) RETURN_IF_FAILED(Move(0, start));
  RETURN_IF_FAILED(need_row());
  return guarded([&] {
    std::vector<std::size_t> chosen;
    RETURN_IF_FAILED(chosen_columns(fields, chosen));
    std::vector<CComVariant> values;
    ULONG count = 0;
    for (; (rows < 0 || count < static_cast<ULONG>(rows)) && result_->current(); ++count) {
      for (const std::size_t column : chosen) RETURN_IF_FAILED(value_of(column, values.emplace_back().put()));
      result_->next();
    }
    const SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(chosen.size()), 0}, {count, 0}};
    CComSafeArray filled;
    filled.attach(SafeArrayCreate(VT_VARIANT, 2, bounds));
    if (!filled) return E_OUTOFMEMORY;
    for (std::size_t i = 0; i < values.size(); ++i) values[i].detach_to(filled.data<VARIANT>() + i);
    filled.detach_to(array);
    return S_OK;
  });
}

HRESULT Recordset::GetString(LONG, LONG rows, VARIANT column_end, VARIANT row_end, BSTR null_text, BSTR* text) {
  *text = nullptr;
  RETURN_IF_FAILED(need_row());
  return guarded([&] {
    const std::wstring between = text_or(column_end, L"\t");
    const std::wstring behind = text_or(row_end, L"\r");
    std::wstring all;
    for (LONG i = 0; (rows < 0 || i < rows) && result_->current(); ++i) {
      for (std::size_t column = 0; column < columns().size(); ++column) {
        CComVariant value;
        RETURN_IF_FAILED(value_of(column, value.put()));
        if (column > 0) all += between;
        if (value.vt == VT_NULL) {
          all += view_of(null_text);
        } else {
          RETURN_IF_FAILED(value.change_type(VT_BSTR));
          all += view_of(value.bstrVal);
        }
      }
      all += behind;
      result_->next();
    }
    *text = new_bstr(all);
    return *text ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT Recordset::NextRecordset(VARIANT* affected, IDispatch** next) {
  *next = nullptr;
  return guarded([&] {
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

HRESULT Recordset::get_PageSize(LONG* rows) {
  *rows = page_size_;
  return S_OK;
}

HRESULT Recordset::put_PageSize(LONG rows) {
  if (rows < 1) return raise(kInvalidArgument, kSource, L"PageSize is 1 or more.");
  page_size_ = rows;
  return S_OK;
}

HRESULT Recordset::get_PageCount(LONG* pages) {
  RETURN_IF_FAILED(need_kept());
  *pages = static_cast<LONG>((result_->size() + page_size_ - 1) / page_size_);
  return S_OK;
}

HRESULT Recordset::get_AbsolutePage(LONG* page) {
  RETURN_IF_FAILED(need_kept());
  *page = result_->is_before_first() ? -2
          : result_->is_after_last() ? -3
                                     : static_cast<LONG>(result_->position()) / page_size_ + 1;
  return S_OK;
}

HRESULT Recordset::put_AbsolutePage(LONG page) {
  LONG pages = 0;
  RETURN_IF_FAILED(get_PageCount(&pages));
  if (page < 1 || page > pages) return raise(kInvalidArgument, kSource, L"AbsolutePage: there is no such page.");
  return go_to(std::int64_t{page - 1} * page_size_);
}

HRESULT Recordset::get_AbsolutePosition(LONG* position) {
  RETURN_IF_FAILED(need_kept());
  *position = result_->is_before_first() ? -2
              : result_->is_after_last() ? -3
                                         : static_cast<LONG>(result_->position()) + 1;
  return S_OK;
}

HRESULT Recordset::put_AbsolutePosition(LONG position) {
  RETURN_IF_FAILED(need_kept());
  if (position < 1 || position > result_->size()) {
    return raise(kInvalidArgument, kSource, L"AbsolutePosition: there is no such record.");
  }
  return go_to(position - 1);
}

HRESULT Recordset::get_CursorType(LONG* type) {
  *type = result_ ? (result_->is_kept() ? 3 : 0) : cursor_type_;
  return S_OK;
}

HRESULT Recordset::put_CursorType(LONG type) {
  if (result_) return raise(kObjectOpen, kSource, L"CursorType can be set only while the recordset is closed.");
  if (type < 0 || type > 3) return raise(kInvalidArgument, kSource, L"CursorType is 0 (forward-only) to 3 (static).");
  cursor_type_ = type;
  return S_OK;
}

HRESULT Recordset::get_CursorLocation(LONG* location) {
  *location = cursor_location_;
  return S_OK;
}

HRESULT Recordset::put_CursorLocation(LONG location) {
  if (result_) return raise(kObjectOpen, kSource, L"CursorLocation can be set only while the recordset is closed.");
  if (location != 2 && location != 3)
    return raise(kInvalidArgument, kSource, L"CursorLocation is 2 (server) or 3 (client).");
  cursor_location_ = location;
  return S_OK;
}

HRESULT Recordset::get_LockType(LONG* type) {
  *type = lock_type_;
  return S_OK;
}

HRESULT Recordset::put_LockType(LONG type) {
  if (type < 1 || type > 4) return raise(kInvalidArgument, kSource, L"LockType is 1 (read-only) to 4.");
  lock_type_ = type;  // records are read-only whatever it says
  return S_OK;
}

HRESULT Recordset::get_Source(BSTR* text) {
  *text = new_bstr(source_);
  return S_OK;
}

HRESULT Recordset::put_Source(BSTR text) {
  source_ = view_of(text);
  return S_OK;
}

HRESULT Recordset::get_ActiveConnection(IDispatch** connection) {
  return CComPtr<IDispatch>(connection_.get()).copy_to(connection);
}

HRESULT Recordset::put_ActiveConnection(VARIANT connection) {
  if (result_) return raise(kObjectOpen, kSource, L"ActiveConnection can be set only while the recordset is closed.");
  return connection_of(connection, kSource, connection_);
}

}  // namespace korlib
