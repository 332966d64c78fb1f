// CComBSTR: an owned BSTR.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <korlib/bstr.h>

class CComBSTR {
 public:
  CComBSTR() noexcept = default;
  CComBSTR(const wchar_t* text) : text_(SysAllocString(text)) {}
  explicit CComBSTR(std::wstring_view text)
      : text_(text.size() < kMaxBstrBytes / sizeof(wchar_t)
                  ? SysAllocStringLen(text.data() ? text.data() : L"", static_cast<UINT>(text.size()))
                  : nullptr) {}
  CComBSTR(const CComBSTR& other) : text_(other.copy()) {}
  CComBSTR(CComBSTR&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  ~CComBSTR() { SysFreeString(text_); }
  CComBSTR& operator=(CComBSTR other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }

  BSTR get() const noexcept { return text_; }
  operator BSTR() const noexcept { return text_; }
  UINT length() const noexcept { return SysStringLen(text_); }
  UINT byte_length() const noexcept { return SysStringByteLen(text_); }
  bool empty() const noexcept { return length() == 0; }
  std::wstring_view view() const noexcept { return {text_ ? text_ : L"", length()}; }

  BSTR* put() noexcept {
    reset();
    return &text_;
  }
  void reset() noexcept { SysFreeString(std::exchange(text_, nullptr)); }
  void attach(BSTR text) noexcept {
    reset();
    text_ = text;
  }
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
