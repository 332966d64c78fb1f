#include "database/command.h"

#include "classes/script_errors.h"
#include "database/convert.h"
#include "database/recordset.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"ADODB.Command";
constexpr LONG kText = 1;
constexpr LONG kTable = 2;
constexpr LONG kStoredProcedure = 4;
constexpr LONG kUnknown = 8;
constexpr LONG kTypeMask = 0x20F;
constexpr LONG kTableDirect = 0x200;

// The values of an array of values; a single one stands for itself.
HRESULT values_of(const VARIANT& given, std::vector<CComVariant>& values) {
  if (is_omitted(given) || given.vt == VT_EMPTY || given.vt == VT_NULL) return S_OK;
  if (given.vt != (VT_ARRAY | VT_VARIANT)) {
    values.emplace_back(given);
    return S_OK;
  }
  if (!given.parray || given.parray->cDims != 1) return DISP_E_TYPEMISMATCH;
  const auto* elements = static_cast<const VARIANT*>(given.parray->pvData);
  for (ULONG i = 0; i < given.parray->rgsabound[0].cElements; ++i) values.emplace_back(elements[i]);
  return S_OK;
}

}  // namespace

std::span<const Member> Command::members() {
  static constexpr Member table[] = {
      property<&Command::get_Parameters>(L"Parameters").is_default(),
      property<&Command::get_ActiveConnection, &Command::put_ActiveConnection, &Command::put_ActiveConnection>(
          L"ActiveConnection"),
      property<&Command::get_CommandType, &Command::put_CommandType>(L"CommandType"),
      property<&Command::get_CommandText, &Command::put_CommandText>(L"CommandText"),
      property<&Command::get_CommandTimeout, &Command::put_CommandTimeout>(L"CommandTimeout"),
      property<&Command::get_Prepared, &Command::put_Prepared>(L"Prepared"),
      property<&Command::get_Name, &Command::put_Name>(L"Name"),
      property<&Command::get_State>(L"State"),
      method<&Command::CreateParameter>(L"CreateParameter").optional(0, 0, 1, 0, 0),
      method<&Command::Execute>(L"Execute").optional(0, 0, -1),
      method<&Command::Cancel>(L"Cancel"),
  };
  return table;
}

STDMETHODIMP Command::put_ActiveConnection(VARIANT connection) try {
  CComPtr<Connection> fresh;
  RETURN_IF_FAILED(connection_of(connection, kSource, fresh));
  return use(std::move(fresh));
} catch (...) {
  return hresult_from_exception(kSource);
}

HRESULT Command::use(CComPtr<Connection> connection) {
  connection_ = std::move(connection);
  return S_OK;
}

HRESULT Command::get_ActiveConnection(IDispatch** connection) {
  return CComPtr<IDispatch>(connection_.get()).copy_to(connection);
}

STDMETHODIMP Command::put_CommandType(LONG type) {
  if (type == -1) type = kUnknown;
  if (type != kText && type != kTable && type != kStoredProcedure && type != kUnknown && type != kTableDirect) {
    return raise(kInvalidArgument, kSource,
                 L"CommandType is 1 (text), 2 (table), 4 (stored procedure) or 8 (unknown).");
  }
  type_ = type & kTypeMask;
  return S_OK;
}

HRESULT Command::get_CommandType(LONG* type) {
  *type = type_;
  return S_OK;
}

STDMETHODIMP Command::put_CommandText(BSTR text) try {
  text_ = view_of(text);
  return S_OK;
} catch (...) {
  return hresult_from_exception(kSource);
}

HRESULT Command::get_CommandText(BSTR* text) {
  *text = new_bstr(text_);
  return S_OK;
}

HRESULT Command::get_CommandTimeout(LONG* seconds) {
  *seconds = timeout_ >= 0 ? timeout_ : connection_ ? connection_->command_timeout() : 30;
  return S_OK;
}

HRESULT Command::put_CommandTimeout(LONG seconds) {
  if (seconds < 0 || seconds > 24 * 3600) {
    return raise(kInvalidArgument, kSource, L"A time-out is a number of seconds; 0 waits without end.");
  }
  timeout_ = seconds;
  return S_OK;
}

HRESULT Command::get_Prepared(VARIANT_BOOL* is_prepared) {
  *is_prepared = is_prepared_ ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT Command::put_Prepared(VARIANT_BOOL is_prepared) {
  is_prepared_ = is_prepared != VARIANT_FALSE;
  return S_OK;
}

HRESULT Command::get_Name(BSTR* name) {
  *name = new_bstr(name_);
  return S_OK;
}

HRESULT Command::put_Name(BSTR name) {
  name_ = view_of(name);
  return S_OK;
}

HRESULT Command::get_State(LONG* state) {
  *state = 0;  // a command runs only during Execute
  return S_OK;
}

HRESULT Command::get_Parameters(IDispatch** parameters) {
  return CComPtr<IDispatch>(parameters_.get()).copy_to(parameters);
}

HRESULT Command::CreateParameter(BSTR name, LONG type, LONG direction, LONG size, VARIANT value,
                                 IDispatch** parameter) {
  *parameter = nullptr;
  CComPtr<ParameterItem> made = make<ParameterItem>();
  RETURN_IF_FAILED(made->put_Name(name));
  RETURN_IF_FAILED(made->put_Type(type));
  RETURN_IF_FAILED(made->put_Direction(direction));
  RETURN_IF_FAILED(made->put_Size(size));
  if (!is_omitted(value)) RETURN_IF_FAILED(made->put_Value(value));
  *parameter = made.detach();
  return S_OK;
}

HRESULT Command::statement_text(std::size_t parameter_count, std::wstring& text) const {
  if (text_.empty()) return raise(kNotAllowedHere, kSource, L"CommandText is empty.");
  text = text_;
  if (type_ == kTable || type_ == kTableDirect) text = L"SELECT * FROM " + text_;
  if (type_ != kStoredProcedure) return S_OK;
  const bool has_return = !parameters_->items().empty() && [&] {
    LONG direction = 0;
    parameters_->items()[0]->get_Direction(&direction);
    return direction == 4;
  }();
  const std::size_t count = parameter_count - (has_return ? 1 : 0);
  text = (has_return ? L"{? = call " : L"{call ") + text_ + L"(";
  for (std::size_t i = 0; i < count; ++i) text += i == 0 ? L"?" : L", ?";
  text += L")}";
  return S_OK;
}

HRESULT Command::collect(const VARIANT& values, std::vector<odbc::Parameter>& parameters) const {
  std::vector<CComVariant> given;
  RETURN_IF_FAILED(values_of(values, given));
  const auto& items = parameters_->items();
  parameters.resize(std::max(items.size(), given.size()));
  const CComPtr<ParameterItem> untyped = make<ParameterItem>();
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const ParameterItem& item = i < items.size() ? *items[i] : *untyped;
    RETURN_IF_FAILED(i < given.size() && !is_omitted(given[i]) ? item.to_statement(i + 1, given[i], parameters[i])
                                                               : item.to_statement(i + 1, parameters[i]));
  }
  return S_OK;
}

HRESULT Command::take_results(const std::vector<odbc::Parameter>& parameters) {
  const auto& items = parameters_->items();
  for (std::size_t i = 0; i < items.size() && i < parameters.size(); ++i) {
    if (parameters[i].direction == odbc::Direction::kIn) continue;
    CComVariant value;
    RETURN_IF_FAILED(to_variant(parameters[i].value, &value));
    RETURN_IF_FAILED(items[i]->put_Value(value));
  }
  return S_OK;
}

HRESULT Command::run(const VARIANT& values, bool is_kept, std::unique_ptr<odbc::ResultSet>& result) {
  if (!connection_) return raise(kInvalidConnection, kSource, L"The command has no connection.");
  RETURN_IF_FAILED(connection_->need_open(kSource));
  return connection_->guarded(kSource, [&] {
    std::vector<odbc::Parameter> parameters;
    RETURN_IF_FAILED(collect(values, parameters));
    std::wstring text;
    RETURN_IF_FAILED(statement_text(parameters.size(), text));
    LONG timeout = 0;
    get_CommandTimeout(&timeout);
    result = connection_->run(text, parameters, timeout, is_kept);
    return take_results(parameters);
  });
}

HRESULT Command::run(bool is_kept, std::unique_ptr<odbc::ResultSet>& result) { return run(omitted(), is_kept, result); }

HRESULT Command::Execute(VARIANT* affected, VARIANT values, LONG, IDispatch** recordset) {
  *recordset = nullptr;
  std::unique_ptr<odbc::ResultSet> result;
  RETURN_IF_FAILED(run(values, connection_ && connection_->keeps_rows(), result));
  put_affected(*result, affected);
  *recordset = make<Recordset>(connection_, std::move(result)).detach();
  return S_OK;
}

HRESULT Command::Cancel() { return S_OK; }

}  // namespace korlib
