#include "script/error_text.h"

#include <fmt/xchar.h>
#include <korlib/combstr.h>

#include <array>
#include <utility>

#include "script/stack.h"
#include "script/watchdog.h"

namespace zelto::script {
namespace {

struct Row {
  HRESULT code;
  const wchar_t* text;
};
constexpr std::array kTexts{
    Row{DISP_E_UNKNOWNNAME, L"Object doesn't support this property or method"},
    Row{DISP_E_MEMBERNOTFOUND, L"Object doesn't support this property or method"},
    Row{DISP_E_PARAMNOTFOUND, L"Argument missing"},
    Row{DISP_E_BADPARAMCOUNT, L"Wrong number of arguments"},
    Row{DISP_E_TYPEMISMATCH, L"Type mismatch"},
    Row{DISP_E_OVERFLOW, L"Overflow"},
    Row{DISP_E_BADINDEX, L"Subscript out of range"},
    Row{DISP_E_BADVARTYPE, L"Invalid value type"},
    Row{DISP_E_DIVBYZERO, L"Division by zero"},
    Row{DISP_E_EXCEPTION, L"Exception occurred"},
    Row{DISP_E_ARRAYISLOCKED, L"The array is locked"},
    Row{E_NOTIMPL, L"Not implemented"},
    Row{E_NOINTERFACE, L"No such interface supported"},
    Row{E_POINTER, L"Invalid pointer"},
    Row{E_ABORT, L"Operation aborted"},
    Row{E_FAIL, L"Unspecified error"},
    Row{E_UNEXPECTED, L"Unexpected failure"},
    Row{E_ACCESSDENIED, L"Access is denied"},
    Row{E_OUTOFMEMORY, L"Out of memory"},
    Row{E_INVALIDARG, L"Invalid argument"},
    Row{REGDB_E_CLASSNOTREG, L"Class not registered"},
    Row{CO_E_CLASSSTRING, L"Invalid class string"},
    Row{CO_E_DLLNOTFOUND, L"The component's library was not found"},
    Row{CO_E_ERRORINDLL, L"The component's library is damaged"},
    Row{CLASS_E_CLASSNOTAVAILABLE, L"The component does not have this class"},
    Row{kOutOfStack, L"Out of stack space"},
    Row{kPageStopped, L"The page has ended"},
};

}  // namespace

ErrorText take_error() {
  ErrorText text;
  if (GetErrorInfo(0, text.info.put()) != S_OK || !text.info) return text;
  CComBSTR part;
  if (SUCCEEDED(text.info->GetSource(part.put()))) text.source = part.view();
  if (SUCCEEDED(text.info->GetDescription(part.put()))) text.description = part.view();
  return text;
}

void clear_error() noexcept { SetErrorInfo(0, nullptr); }

std::wstring describe(HRESULT hr, std::wstring_view member) {
  std::wstring text = L"Automation error";
  for (const Row& row : kTexts) {
    if (row.code == hr) text = row.text;
  }
  return describe(hr, std::move(text), member);
}

std::wstring describe(HRESULT hr, std::wstring text, std::wstring_view member) {
  if (!member.empty()) text.append(L": '").append(member).append(L"'");
  return text + fmt::format(L" (0x{:08X})", static_cast<unsigned>(hr));
}

}  // namespace zelto::script
