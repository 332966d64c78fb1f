#include "database/recordset_rows.h"

#include "database/convert.h"

namespace korlib {

HRESULT rows_as_array(odbc::ResultSet& result, LONG rows, const std::vector<std::size_t>& columns, VARIANT* array) {
  std::vector<CComVariant> values;
  ULONG count = 0;
  for (; (rows < 0 || count < static_cast<ULONG>(rows)) && result.current(); ++count) {
    for (const std::size_t column : columns) {
      RETURN_IF_FAILED(to_variant((*result.current())[column], values.emplace_back().put()));
    }
    result.next();
  }
  const SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(columns.size()), 0}, {count, 0}};
  CComSafeArray filled;
  filled.attach(SafeArrayCreate(VT_VARIANT, 2, bounds));
  if (!filled) return E_OUTOFMEMORY;
  for (std::size_t i = 0; i < values.size(); ++i) values[i].detach_to(filled.data<VARIANT>() + i);
  filled.detach_to(array);
  return S_OK;
}

HRESULT rows_as_text(odbc::ResultSet& result, LONG rows, const TextMarks& marks, BSTR* text) {
  std::wstring all;
  for (LONG i = 0; (rows < 0 || i < rows) && result.current(); ++i) {
    bool is_first = true;
    for (const odbc::Value& value : *result.current()) {
      CComVariant converted;
      RETURN_IF_FAILED(to_variant(value, converted.put()));
      if (!std::exchange(is_first, false)) all += marks.between;
      if (converted.vt == VT_NULL) {
        all += marks.null;
      } else {
        RETURN_IF_FAILED(converted.change_type(VT_BSTR));
        all += view_of(converted.bstrVal);
      }
    }
    all += marks.behind;
    result.next();
  }
  *text = new_bstr(all);
  return *text ? S_OK : E_OUTOFMEMORY;
}

}  // namespace korlib
