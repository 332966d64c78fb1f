// CMarkData: one parsed mark of a template.
#pragma once

#include <sstream>
#include <vector>

#include <korlib/combstr.h>

// The parameter list that mark handlers and ChangeToBSTR take.
using MarkParams = std::vector<std::wstringstream*>;

// Read Name and the parameters with view() or bstr_of(): str() copies, and a cached mark is read at every
// replay, by several threads at once.
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
};

// A new BSTR of what a stream holds; null when memory is short, an empty string for an empty stream.
inline CComBSTR bstr_of(const std::wstringstream& text) { return CComBSTR(text.view()); }
