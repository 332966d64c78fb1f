#include "templator/mark_data.h"

CMarkData::~CMarkData() {
  for (std::wstringstream* param : Params) delete param;
}

CComBSTR bstr_of(const std::wstringstream& text) { return CComBSTR(text.view()); }
