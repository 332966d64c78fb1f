// What a decoding member hands out for decoded bytes, by the rule of its `charset`: a value of its kind
// that holds them whole.
#pragma once

#include <cstring>
#include <optional>
#include <string>

#include <korlib/comvariant.h>
#include <korlib/text.h>

#include "text_input.h"

namespace fuzz {

// The form for bytes is one row of them that begins at 0.
inline bool is_byte_array(const VARIANT& value, const std::string& bytes) {
  if (value.vt != (VT_ARRAY | VT_UI1)) return false;
  const SAFEARRAY& array = *value.parray;
  return array.cDims == 1 && array.rgsabound[0].lLbound == 0 && array.rgsabound[0].cElements == bytes.size() &&
         (bytes.empty() || std::memcmp(array.pvData, bytes.data(), bytes.size()) == 0);
}

// 0 and above: the bytes read as UTF-8; -2: an array of them; below 0 otherwise: the memory of a string.
inline bool is_decoded(const VARIANT& value, const std::string& bytes, LONG charset) {
  if (charset == -2) return is_byte_array(value, bytes);
  if (value.vt != VT_BSTR) return false;
  if (charset < 0) {
    return SysStringByteLen(value.bstrVal) == bytes.size() &&
           (bytes.empty() || std::memcmp(value.bstrVal, bytes.data(), bytes.size()) == 0);
  }
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size());
  return korlib::view_of(value.bstrVal) == text;
}

// What a decoder and the member of its name make of `text`, beside what the rules make of it.
template <class Decode, class Member>
std::string decoded_by_rules(const std::wstring& text, LONG charset, const std::optional<std::string>& expected,
                             Decode decode, Member member) {
  std::string bytes;
  require(decode(text.data(), text.size(), bytes) == (expected ? S_OK : E_FAIL), "what can be decoded");
  if (expected) require(bytes == *expected, "the bytes");

  CComVariant value;
  const CComBSTR input(std::wstring_view{text});
  require(member(input, charset, &value) == (expected ? S_OK : E_FAIL), "the member's code");
  require(expected ? is_decoded(value, *expected, charset) : value.vt == VT_EMPTY, "the member's value");
  return bytes;
}

}  // namespace fuzz
