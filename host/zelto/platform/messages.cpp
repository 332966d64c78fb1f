// FormatMessageW: what result codes mean, in words.
#include <korlib/hresult.h>
#include <korlib/winapi.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct Message {
  HRESULT code;
  std::wstring_view text;
};

constexpr std::array kMessages{
    Message{S_OK, L"The operation completed successfully."},
    Message{E_NOTIMPL, L"Not implemented."},
    Message{E_NOINTERFACE, L"No such interface supported."},
    Message{E_POINTER, L"Invalid pointer."},
    Message{E_ABORT, L"Operation aborted."},
    Message{E_FAIL, L"Unspecified error."},
    Message{E_UNEXPECTED, L"Catastrophic failure."},
    Message{E_ACCESSDENIED, L"Access is denied."},
    Message{E_OUTOFMEMORY, L"Not enough memory resources are available to complete this operation."},
    Message{E_INVALIDARG, L"The parameter is incorrect."},
    Message{DISP_E_UNKNOWNINTERFACE, L"Unknown interface."},
    Message{DISP_E_MEMBERNOTFOUND, L"Member not found."},
    Message{DISP_E_PARAMNOTFOUND, L"Parameter not found."},
    Message{DISP_E_TYPEMISMATCH, L"Type mismatch."},
    Message{DISP_E_UNKNOWNNAME, L"Unknown name."},
    Message{DISP_E_NONAMEDARGS, L"No named arguments."},
    Message{DISP_E_BADVARTYPE, L"Bad variable type."},
    Message{DISP_E_EXCEPTION, L"Exception occurred."},
    Message{DISP_E_OVERFLOW, L"Out of present range."},
    Message{DISP_E_BADINDEX, L"Invalid index."},
    Message{DISP_E_ARRAYISLOCKED, L"Memory is locked."},
    Message{DISP_E_BADPARAMCOUNT, L"Invalid number of parameters."},
    Message{DISP_E_DIVBYZERO, L"Division by zero."},
    Message{CLASS_E_NOAGGREGATION, L"Class does not support aggregation."},
    Message{CLASS_E_CLASSNOTAVAILABLE, L"The class is not available in this module."},
    Message{REGDB_E_CLASSNOTREG, L"Class not registered."},
    Message{CO_E_CLASSSTRING, L"Invalid class string."},
    Message{CO_E_DLLNOTFOUND, L"The module of the class could not be found."},
    Message{CO_E_ERRORINDLL, L"Error in the module of the class."},
    Message{CONTEXT_E_NOCONTEXT, L"There is no object context."},
    Message{TYPE_E_ELEMENTNOTFOUND, L"Element not found."},
    Message{TYPE_E_CANTLOADLIBRARY, L"Error loading type library."},
    Message{korlib::hresult(0x800A001C), L"Out of stack space."},
};

}  // namespace

// Texts are English whatever `language` asks for. One that does not fit the buffer is not given at all.
extern "C" DWORD FormatMessageW(DWORD flags, const void*, DWORD message, DWORD, wchar_t* buffer, DWORD size, void*) {
  if (!buffer || size == 0) return 0;
  *buffer = L'\0';
  if (!(flags & FORMAT_MESSAGE_FROM_SYSTEM)) return 0;
  const auto row = std::ranges::find(kMessages, static_cast<HRESULT>(message), &Message::code);
  if (row == kMessages.end() || row->text.size() >= size) return 0;
  buffer[row->text.copy(buffer, row->text.size())] = L'\0';
  return static_cast<DWORD>(row->text.size());
}
