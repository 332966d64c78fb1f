// CComBSTR: an owned BSTR; and strings between BSTR and C++ text.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <korlib/bstr.h>

// An owned BSTR, as cheap as a raw one. put() frees what is held and lends the slot to an out-parameter;
// attach() and detach() move a string without copying; get() and the conversion peek.
//
// Constructors that copy are null when memory is short or the text is too long: a member that must not mistake
// that for an empty string looks at get().
//
//   CComBSTR name;
//   RETURN_IF_FAILED(file->get_FileName(name.put()));
//   return name.view().starts_with(L"image") ? S_OK : S_FALSE;
class CComBSTR {
 public:
  // Null, which reads as the empty string.
  CComBSTR() noexcept = default;
  // A copy of NUL-terminated text; null stays null.
  CComBSTR(const wchar_t* text) : text_(SysAllocString(text)) {}
  // A copy of the whole text, NULs included. An empty view, also one of null, gives an empty string that is not
  // null.
  explicit CComBSTR(std::wstring_view text)
      : text_(text.size() < kMaxBstrBytes / sizeof(wchar_t)
                  ? SysAllocStringLen(text.data() ? text.data() : L"", static_cast<UINT>(text.size()))
                  : nullptr) {}
  // A copy of the same bytes.
  CComBSTR(const CComBSTR& other) : text_(other.copy()) {}
  // Takes the string over and leaves null.
  CComBSTR(CComBSTR&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  ~CComBSTR() { SysFreeString(text_); }
  // Takes the value that was made for the argument: a copy, or what was moved into it.
  CComBSTR& operator=(CComBSTR other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }

  // The string itself, still owned here; null when there is none.
  BSTR get() const noexcept { return text_; }
  operator BSTR() const noexcept { return text_; }
  // In characters, and in bytes. Null is empty, and so is a string of no characters.
  UINT length() const noexcept { return SysStringLen(text_); }
  UINT byte_length() const noexcept { return SysStringByteLen(text_); }
  bool empty() const noexcept { return length() == 0; }
  // The characters, never a null pointer; valid until the string changes or goes.
  std::wstring_view view() const noexcept { return {text_ ? text_ : L"", length()}; }

  // For `member(text.put())`: the slot is null until the callee fills it, and what it fills in is owned here.
  BSTR* put() noexcept {
    reset();
    return &text_;
  }
  // Frees the string: null.
  void reset() noexcept { SysFreeString(std::exchange(text_, nullptr)); }
  // Takes over a string that the caller owned.
  void attach(BSTR text) noexcept {
    reset();
    text_ = text;
  }
  // Gives the string away; null is left.
  [[nodiscard]] BSTR detach() noexcept { return std::exchange(text_, nullptr); }
  // A new BSTR of the same bytes, null for null; the caller frees it.
  [[nodiscard]] BSTR copy() const {
    return text_ ? SysAllocStringByteLen(reinterpret_cast<const char*>(text_), SysStringByteLen(text_)) : nullptr;
  }

  // Code-unit order over the whole text, embedded NULs included; null and empty are equal.
  friend bool operator<(const CComBSTR& a, const CComBSTR& b) noexcept { return a.view() < b.view(); }
  friend bool operator==(const CComBSTR& a, const CComBSTR& b) noexcept { return a.view() == b.view(); }

 private:
  BSTR text_ = nullptr;
};

namespace korlib {

// The characters of a BSTR that somebody else owns; empty for null.
inline std::wstring_view view_of(BSTR text) noexcept { return {text ? text : L"", SysStringLen(text)}; }

// A new BSTR for an out-parameter; null when the text is too long or memory is short.
[[nodiscard]] inline BSTR new_bstr(std::wstring_view text) { return CComBSTR(text).detach(); }

}  // namespace korlib
