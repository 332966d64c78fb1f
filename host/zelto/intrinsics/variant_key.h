// How a script names an entry of a collection: by name, or by its place counted from 1.
#pragma once

#include <korlib/comvariant.h>

#include <optional>
#include <string>

namespace zelto {

struct VariantKey {
  std::optional<std::size_t> place;  // counted from 0; set for a number
  std::wstring name;                 // set for anything else
};

// A place is checked against `count`: DISP_E_BADINDEX outside it. What has no text is DISP_E_TYPEMISMATCH.
HRESULT read_key(const VARIANT& value, std::size_t count, VariantKey& key);
// As read_key, for what must be a number.
HRESULT read_place(const VARIANT& value, std::size_t count, std::size_t& place);

void put_text(std::wstring_view text, VARIANT* value);

}  // namespace zelto
