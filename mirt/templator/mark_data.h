// CMarkData: one parsed mark of a template.
#pragma once

#include <sstream>
#include <vector>

#include <korlib/combstr.h>

// The parameter list that mark handlers and ChangeToBSTR take.
using MarkParams = std::vector<std::wstringstream*>;

// Read Name and the parameters with view() or bstr_of(): str() copies, and a cached mark is read at every
// replay, by several threads at once. What only looks the name up takes Key.
struct CMarkData {
  CMarkData() = default;
  ~CMarkData() {
    for (std::wstringstream* param : Params) delete param;
  }
  CMarkData(const CMarkData&) = delete;
  CMarkData& operator=(const CMarkData&) = delete;

  wchar_t Type = 0;         // 0 when the mark has no type character
  std::wstringstream Name;  // unescaped
  MarkParams Params;        // owned; in order
  CComBSTR Key;             // the name as a string; null where there was no memory for it, or nobody has scanned it
};

// The name of a mark as a string, for as long as both live: the one that the scanner has made, or else a new one.
class MarkName {
 public:
  explicit MarkName(const CMarkData& mark) : name_(mark.Key.get()) {
    if (name_) return;
    made_ = CComBSTR(mark.Name.view());
    name_ = made_.get();
  }
  MarkName(const MarkName&) = delete;
  MarkName& operator=(const MarkName&) = delete;

  BSTR get() const noexcept { return name_; }  // null when memory is short
  operator BSTR() const noexcept { return name_; }
  bool empty() const noexcept { return SysStringLen(name_) == 0; }
  std::wstring_view view() const noexcept { return korlib::view_of(name_); }

 private:
  CComBSTR made_;
  BSTR name_;
};

// A new BSTR of what a stream holds; null when memory is short, an empty string for an empty stream.
inline CComBSTR bstr_of(const std::wstringstream& text) { return CComBSTR(text.view()); }
