// What members of the intrinsic objects take and give: entries of collections as scripts name them, and results.
#pragma once

#include <korlib/comvariant.h>
#include <korlib_host/enumerator.h>
#include <korlib_host/errors.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zelto {

// An entry of a collection: by name, or by its place.
struct VariantKey {
  std::optional<std::size_t> place;  // counted from 0; set for a number
  std::wstring name;                 // set for anything else
};

// A number is a place, counted from 1 and checked against `count`: DISP_E_BADINDEX outside it. What has no text is
// DISP_E_TYPEMISMATCH.
HRESULT read_key(const VARIANT& value, std::size_t count, VariantKey& key);
// As read_key, for what must be a number.
HRESULT read_place(const VARIANT& value, std::size_t count, std::size_t& place);

using korlib::guarded;

// Results. Each answers E_POINTER when there is no room for one.
template <class Result>
HRESULT give(std::type_identity_t<Result> value, Result* result) {
  if (!result) return E_POINTER;
  *result = value;
  return S_OK;
}
inline HRESULT give_bool(bool truth, VARIANT_BOOL* result) {
  return give(truth ? VARIANT_TRUE : VARIANT_FALSE, result);
}
HRESULT give_text(std::wstring_view text, BSTR* result);
HRESULT give_text(std::wstring_view text, VARIANT* result);
// A further reference.
HRESULT give_object(IDispatch* object, VARIANT* result);

template <class Rows>
std::vector<std::wstring> names_of(const Rows& rows) {
  std::vector<std::wstring> names;
  names.reserve(rows.size());
  for (const auto& row : rows) names.push_back(row.name);
  return names;
}

// The texts of a list, or what `text_of` makes of each of its rows, as an enumeration.
template <class Rows, class TextOf = std::identity>
HRESULT give_texts(const Rows& rows, IUnknown** result, TextOf text_of = {}) {
  std::vector<CComVariant> values;
  values.reserve(rows.size());
  for (const auto& row : rows) {
    values.emplace_back(std::wstring_view(std::invoke(text_of, row)));
    if (!values.back().bstrVal) return E_OUTOFMEMORY;
  }
  return korlib::make_enumerator(std::move(values), result);
}

}  // namespace zelto
