#include "script/error_numbers.h"

#include <korlib/hresult.h>

#include <array>

namespace zelto::script {
namespace {

// Facility "control", in which that dialect counts its errors.
constexpr HRESULT numbered(unsigned number) { return static_cast<HRESULT>(0x800A0000u | number); }

constexpr unsigned kNoSuchMember = 438;
constexpr unsigned kFunctionExpected = 5002;

struct Row {
  std::wstring_view name;     // of the error
  std::wstring_view message;  // what stands in it
  unsigned number;
};
// The numbers that older pages know an error of the engine by: `e.number & 0xFFFF` is 5009 for a name that
// nobody declared. They are those of that dialect's documentation. The first that fits.
constexpr std::array kRows{
    Row{L"ReferenceError", L"Can't find variable: ", 5009},
    Row{L"ReferenceError", L"is not a reference", 5008},
    Row{L"TypeError", L" is not an object", 5007},
    Row{L"TypeError", L" is not an Object", 5007},
    Row{L"TypeError", L" is not a constructor", 445},
    Row{L"TypeError", L"readonly property", 5008},
    Row{L"TypeError", L"VBArray expected", 5013},
    Row{L"RangeError", L"Maximum call stack size exceeded", 28},
    Row{L"RangeError", L"Out of stack space", 28},
    Row{L"RangeError", L"Subscript out of range", 9},
    Row{L"RangeError", L"Out of memory", 7},
    Row{L"RangeError", L"Array length must", 5029},
    Row{L"RangeError", L"toFixed() ", 5026},
    Row{L"RangeError", L"toExponential() ", 5026},
    Row{L"RangeError", L"toPrecision() ", 5027},
    Row{L"RangeError", L"argument", 5},
    Row{L"SyntaxError", L"Invalid regular expression", 5017},
    Row{L"SyntaxError", L"", 1002},
    Row{L"URIError", L"illegal UTF-16", 5024},
    Row{L"URIError", L"", 5025},
};

// "o.f is not a function" is a member that is missing, "f is not a function" a value of another kind.
unsigned number_of_call(std::wstring_view callee) {
  return callee.find_first_of(L".[") == std::wstring_view::npos ? kFunctionExpected : kNoSuchMember;
}

}  // namespace

HRESULT number_of(std::wstring_view name, std::wstring_view message) {
  if (const auto end = message.find(L" is not a function"); name == L"TypeError" && end != std::wstring_view::npos) {
    return numbered(number_of_call(message.substr(0, end)));
  }
  for (const Row& row : kRows) {
    if (row.name == name && message.find(row.message) != std::wstring_view::npos) return numbered(row.number);
  }
  return S_OK;
}

}  // namespace zelto::script
