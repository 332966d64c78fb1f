#include "database/command.h"

#include "database/convert.h"
#include "database/recordset.h"

namespace korlib {

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

STDMETHODIMP Command::put_ActiveConnection(VARIANT connection) {
  return guarded(kSource, [&] {
    CComPtr<Connection> fresh;
    RETURN_IF_FAILED(connection_of(connection, kSource, fresh));
    use(std::move(fresh));
    return S_OK;
  });
}

STDMETHODIMP Command::put_CommandType(LONG type) {
  const CommandType wanted = type == -1 ? CommandType::unknown : static_cast<CommandType>(type);
  switch (wanted) {
    case CommandType::text:
    case CommandType::table:
    case CommandType::stored_procedure:
    case CommandType::unknown:
    case CommandType::table_direct:
      type_ = wanted;
      return S_OK;
  }
  return raise(kInvalidArgument, kSource, L"CommandType is 1 (text), 2 (table), 4 (stored procedure) or 8 (unknown).");
}

STDMETHODIMP Command::put_CommandText(BSTR text) {
  return guarded(kSource, [&] { return keep(text, text_); });
}

HRESULT Command::get_CommandTimeout(LONG* seconds) {
  constexpr LONG kUsual = 30;
  return give(timeout_ >= 0 ? timeout_ : connection_ ? connection_->command_timeout() : kUsual, seconds);
}

HRESULT Command::put_CommandTimeout(LONG seconds) { return set_timeout(kSource, seconds, timeout_); }

HRESULT Command::put_Prepared(VARIANT_BOOL is_prepared) {
  is_prepared_ = is_prepared != VARIANT_FALSE;
  return S_OK;
}

HRESULT Command::CreateParameter(BSTR name, LONG type, LONG direction, LONG size, VARIANT value,
                                 IDispatch** parameter) {
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
  if (type_ == CommandType::table || type_ == CommandType::table_direct) text = L"SELECT * FROM " + text_;
  if (type_ != CommandType::stored_procedure) return S_OK;
  const auto& items = parameters_->items();
  const bool has_return = !items.empty() && items[0]->direction() == odbc::Direction::return_value;
  const std::size_t count = parameter_count - (has_return ? 1 : 0);
  text = (has_return ? L"{? = call " : L"{call ") + text_ + L"(";
  for (std::size_t i = 0; i < count; ++i) text += i == 0 ? L"?" : L", ?";
  text += L")}";
  return S_OK;
}

HRESULT Command::collect(const VARIANT& values, std::vector<odbc::Parameter>& parameters) const {
  std::vector<CComVariant> given;
  RETURN_IF_FAILED(elements_of(values, given));
  const auto& items = parameters_->items();
  parameters.resize(std::max(items.size(), given.size()));
  const CComPtr<ParameterItem> untyped = make<ParameterItem>();
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const ParameterItem& item = i < items.size() ? *items[i] : *untyped;
    const bool is_given = i < given.size() && !is_omitted(given[i]);
    RETURN_IF_FAILED(item.to_statement(i + 1, is_given ? given[i] : item.value(), parameters[i]));
  }
  return S_OK;
}

HRESULT Command::take_results(const std::vector<odbc::Parameter>& parameters) {
  const auto& items = parameters_->items();
  for (std::size_t i = 0; i < items.size() && i < parameters.size(); ++i) {
    if (parameters[i].direction == odbc::Direction::in) continue;
    CComVariant value;
    RETURN_IF_FAILED(to_variant(parameters[i].value, &value));
    RETURN_IF_FAILED(items[i]->put_Value(value));
  }
  return S_OK;
}

HRESULT Command::run(const VARIANT& values, bool is_kept, std::unique_ptr<odbc::ResultSet>& result) {
  if (!connection_) return raise(kInvalidConnection, kSource, L"The command has no connection.");
  RETURN_IF_FAILED(connection_->need_open(kSource));
  return connection_->noting_failures(kSource, [&] {
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

HRESULT Command::Execute(VARIANT* affected, VARIANT values, LONG, IDispatch** recordset) {
  std::unique_ptr<odbc::ResultSet> result;
  RETURN_IF_FAILED(run(values, connection_ && connection_->keeps_rows(), result));
  put_affected(*result, affected);
  *recordset = make<Recordset>(connection_, std::move(result)).detach();
  return S_OK;
}

}  // namespace korlib
