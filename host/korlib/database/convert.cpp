#include "database/convert.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>

#include <korlib_host/memory_limit.h>

#include "base/ascii.h"
#include "base/serial_date.h"
#include "variant/number_parser.h"

namespace korlib {
namespace {

struct TypeRow {
  odbc::Kind kind;
  std::initializer_list<DataType> types;  // the first one is what columns of the kind report
};
constexpr TypeRow kTypes[] = {
    {odbc::Kind::boolean, {DataType::boolean}},
    {odbc::Kind::integer,
     {DataType::integer, DataType::small_int, DataType::tiny_int, DataType::unsigned_tiny_int,
      DataType::unsigned_small_int}},
    {odbc::Kind::big_integer, {DataType::big_int, DataType::unsigned_int, DataType::unsigned_big_int}},
    {odbc::Kind::real, {DataType::double_precision, DataType::single}},
    {odbc::Kind::decimal, {DataType::numeric, DataType::currency, DataType::decimal}},
    {odbc::Kind::date, {DataType::db_date}},
    {odbc::Kind::time, {DataType::db_time}},
    {odbc::Kind::moment, {DataType::db_time_stamp, DataType::date}},
    {odbc::Kind::text,
     {DataType::var_wide_chars, DataType::bstr, DataType::guid, DataType::chars, DataType::wide_chars,
      DataType::var_chars}},
    {odbc::Kind::long_text, {DataType::long_var_wide_chars, DataType::long_var_chars}},
    {odbc::Kind::binary, {DataType::var_binary, DataType::binary}},
    {odbc::Kind::long_binary, {DataType::long_var_binary}},
};

HRESULT text_variant(std::wstring_view text, VARIANT* variant) {
  BSTR made = new_bstr(text);
  if (!made) return E_OUTOFMEMORY;
  variant->vt = VT_BSTR;
  variant->bstrVal = made;
  return S_OK;
}

HRESULT bytes_variant(const std::string& bytes, VARIANT* variant) {
  CComSafeArray array(VT_UI1, static_cast<ULONG>(bytes.size()));
  if (!array) return E_OUTOFMEMORY;
  if (!bytes.empty()) std::memcpy(array.data<char>(), bytes.data(), bytes.size());
  array.detach_to(variant);
  return S_OK;
}

// A double holds any 15 digits; what has more would change.
HRESULT decimal_variant(const std::wstring& digits, VARIANT* variant) {
  const auto count = std::ranges::count_if(digits, base::is_digit<wchar_t>);
  if (count > 15) return text_variant(digits, variant);
  variant->vt = VT_R8;
  variant->dblVal = std::wcstod(digits.c_str(), nullptr);
  return S_OK;
}

HRESULT read_integer(const VARIANT& variant, bool is_wide, odbc::Value& value) {
  // A conversion keeps the bits of an unsigned number; a table would get a negative one.
  if (variant.vt == VT_UI8 && variant.ullVal > std::numeric_limits<std::int64_t>::max()) return DISP_E_OVERFLOW;
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, &variant, 0, VT_I8));
  const bool fits =
      number.llVal >= std::numeric_limits<LONG>::min() && number.llVal <= std::numeric_limits<LONG>::max();
  if (!is_wide && !fits) return DISP_E_OVERFLOW;
  value = std::int64_t{number.llVal};
  return S_OK;
}

HRESULT read_decimal(const VARIANT& variant, odbc::Value& value) {
  if (variant.vt != VT_BSTR) {
    CComVariant text;
    RETURN_IF_FAILED(VariantChangeType(&text, &variant, 0, VT_BSTR));
    value = odbc::Decimal{std::wstring(view_of(text.bstrVal))};
    return S_OK;
  }
  // Text keeps all its digits when it is a number; drivers do not read currency signs or groups of digits.
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, &variant, 0, VT_R8));
  std::wstring digits;
  RETURN_IF_FAILED(variants::plain_number(view_of(variant.bstrVal), &digits));
  value = odbc::Decimal{std::move(digits)};
  return S_OK;
}

DATE to_date(const odbc::Moment& moment) {
  const std::chrono::sys_days day = std::chrono::year{moment.year} / moment.month / moment.day;
  const double seconds = moment.hour * 3600.0 + moment.minute * 60.0 + moment.second;
  return base::join({static_cast<double>((day - base::kDayZero).count()),
                     (seconds * 1e9 + moment.nanosecond) / (base::kSecondsPerDay * 1e9)});
}

// A double keeps about a microsecond of a present date.
odbc::Moment to_moment(DATE date) {
  auto [day, part] = base::split(date);
  constexpr std::int64_t kPerDay = std::int64_t{base::kSecondsPerDay} * 1'000'000;
  std::int64_t microseconds = std::llround(part * static_cast<double>(kPerDay));
  if (microseconds >= kPerDay) {
    microseconds = 0;
    day += 1;
  }
  // What is this close to a whole millisecond differs from it by rounding only.
  const std::int64_t whole = (microseconds + 500) / 1000 * 1000;
  if (std::llabs(whole - microseconds) <= 2) microseconds = whole;
  const std::chrono::year_month_day civil = base::calendar_day(static_cast<std::int64_t>(day));
  const std::chrono::hh_mm_ss time{std::chrono::microseconds(microseconds)};
  return {static_cast<std::int16_t>(static_cast<int>(civil.year())),
          static_cast<std::uint16_t>(static_cast<unsigned>(civil.month())),
          static_cast<std::uint16_t>(static_cast<unsigned>(civil.day())),
          static_cast<std::uint16_t>(time.hours().count()),
          static_cast<std::uint16_t>(time.minutes().count()),
          static_cast<std::uint16_t>(time.seconds().count()),
          static_cast<std::uint32_t>(std::chrono::nanoseconds(time.subseconds()).count())};
}

HRESULT read_moment(const VARIANT& variant, odbc::Value& value) {
  CComVariant date;
  RETURN_IF_FAILED(VariantChangeType(&date, &variant, 0, VT_DATE));
  if (!base::is_date(date.date)) return DISP_E_OVERFLOW;
  value = to_moment(date.date);
  return S_OK;
}

HRESULT read_bytes(const VARIANT& variant, odbc::Value& value) {
  if (variant.vt != (VT_ARRAY | VT_UI1) || !variant.parray || variant.parray->cDims != 1) return DISP_E_TYPEMISMATCH;
  const SAFEARRAY& array = *variant.parray;
  value = odbc::Bytes{std::string(static_cast<const char*>(array.pvData), array.rgsabound[0].cElements)};
  return S_OK;
}

// Asked after each row: rows that are kept come without the database, which would be stopped.
bool is_memory_used_up(LONG row) {
  constexpr LONG kEvery = 256;
  korlib_host::MemoryLimit* const limit = row % kEvery == 0 ? korlib_host::memory_limit() : nullptr;
  return limit && limit->is_exceeded();
}

}  // namespace

DataType type_of(odbc::Kind kind) { return *std::ranges::find(kTypes, kind, &TypeRow::kind)->types.begin(); }

std::optional<odbc::Kind> kind_of(DataType type) {
  for (const TypeRow& row : kTypes) {
    if (std::ranges::find(row.types, type) != row.types.end()) return row.kind;
  }
  return std::nullopt;
}

odbc::Kind kind_of_value(const VARIANT& value) {
  if (value.vt == (VT_ARRAY | VT_UI1)) return odbc::Kind::binary;
  if (value.vt == VT_INT) return odbc::Kind::integer;
  if (value.vt == VT_UINT) return odbc::Kind::big_integer;
  // The other types of plain values have their numbers among the data types.
  return kind_of(static_cast<DataType>(value.vt)).value_or(odbc::Kind::text);
}

HRESULT elements_of(const VARIANT& given, std::vector<CComVariant>& elements) {
  if (is_nothing(given)) return S_OK;
  if (given.vt != (VT_ARRAY | VT_VARIANT)) {
    elements.emplace_back(given);
    return S_OK;
  }
  if (!given.parray || given.parray->cDims != 1) return DISP_E_TYPEMISMATCH;
  const auto* all = static_cast<const VARIANT*>(given.parray->pvData);
  elements.assign(all, all + given.parray->rgsabound[0].cElements);
  return S_OK;
}

HRESULT to_variant(const odbc::Value& value, VARIANT* variant) {
  VariantInit(variant);
  if (const auto* truth = std::get_if<bool>(&value)) {
    variant->vt = VT_BOOL;
    variant->boolVal = *truth ? VARIANT_TRUE : VARIANT_FALSE;
  } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    const bool is_small = *integer >= INT32_MIN && *integer <= INT32_MAX;
    variant->vt = is_small ? VT_I4 : VT_I8;
    variant->llVal = *integer;
    if (is_small) variant->lVal = static_cast<LONG>(*integer);
  } else if (const auto* real = std::get_if<double>(&value)) {
    variant->vt = VT_R8;
    variant->dblVal = *real;
  } else if (const auto* decimal = std::get_if<odbc::Decimal>(&value)) {
    return decimal_variant(decimal->digits, variant);
  } else if (const auto* moment = std::get_if<odbc::Moment>(&value)) {
    variant->vt = VT_DATE;
    variant->date = to_date(*moment);
  } else if (const auto* text = std::get_if<std::wstring>(&value)) {
    return text_variant(*text, variant);
  } else if (const auto* bytes = std::get_if<odbc::Bytes>(&value)) {
    return bytes_variant(bytes->data, variant);
  } else {
    variant->vt = VT_NULL;
  }
  return S_OK;
}

HRESULT from_variant(const VARIANT& variant, odbc::Kind kind, odbc::Value& value) {
  value = {};
  if (is_nothing(variant)) return S_OK;
  CComVariant result;
  switch (kind) {
    case odbc::Kind::boolean:
      RETURN_IF_FAILED(VariantChangeType(&result, &variant, 0, VT_BOOL));
      value = result.boolVal != VARIANT_FALSE;
      return S_OK;
    case odbc::Kind::integer:
      return read_integer(variant, false, value);
    case odbc::Kind::big_integer:
      return read_integer(variant, true, value);
    case odbc::Kind::real:
      RETURN_IF_FAILED(VariantChangeType(&result, &variant, 0, VT_R8));
      value = result.dblVal;
      return S_OK;
    case odbc::Kind::decimal:
      return read_decimal(variant, value);
    case odbc::Kind::date:
    case odbc::Kind::time:
    case odbc::Kind::moment:
      return read_moment(variant, value);
    case odbc::Kind::binary:
    case odbc::Kind::long_binary:
      return read_bytes(variant, value);
    case odbc::Kind::text:
    case odbc::Kind::long_text:
      break;
  }
  RETURN_IF_FAILED(VariantChangeType(&result, &variant, 0, VT_BSTR));
  value = std::wstring(view_of(result.bstrVal));
  return S_OK;
}

HRESULT rows_as_array(odbc::ResultSet& result, LONG rows, const std::vector<std::size_t>& columns, VARIANT* array) {
  std::vector<CComVariant> values;
  ULONG count = 0;
  for (; (rows < 0 || count < static_cast<ULONG>(rows)) && result.current(); ++count) {
    for (const std::size_t column : columns) {
      RETURN_IF_FAILED(to_variant((*result.current())[column], values.emplace_back().put()));
    }
    if (is_memory_used_up(static_cast<LONG>(count))) return E_OUTOFMEMORY;
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
    all += marks.after;
    if (is_memory_used_up(i)) return E_OUTOFMEMORY;
    result.next();
  }
  *text = new_bstr(all);
  return *text ? S_OK : E_OUTOFMEMORY;
}

}  // namespace korlib
